#include "libretro/options.h"

#include "api/kiv.h"

#include <cstdlib>
#include <cstring>

namespace {

using definition = retro_core_option_v2_definition;

definition english[] = {
    {"kiv_roms",
     "ROM images",
     nullptr,
     "The open ROM set inside, or 8801-zun.rom, 8801-kiv.rom and 8801-4th.rom from the system folder. From "
     "the next "
     "start on.",
     nullptr,
     nullptr,
     {{"open", "Open ROM set"}, {"system", "System folder"}, {nullptr, nullptr}},
     "open"},
    {"kiv_basic",
     "BASIC",
     nullptr,
     "What the switch asks for. From the next reset on.",
     nullptr,
     nullptr,
     {{"zun", "Zun-BASIC"}, {"n", "N-BASIC"}, {nullptr, nullptr}},
     "zun"},
    {"kiv_monitor",
     "Monitor",
     nullptr,
     "Programs see which one is there.",
     nullptr,
     nullptr,
     {{"24", "24 kHz, 400 lines"}, {"15", "15 kHz, 200 lines"}, {nullptr, nullptr}},
     "24"},
    {"kiv_aspect",
     "Picture",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"4:3", "4:3, as on the monitor"}, {"square", "Square pixels"}, {nullptr, nullptr}},
     "4:3"},
    {"kiv_lines",
     "Odd lines",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"full", "Full brightness"}, {"half", "Half brightness"}, {nullptr, nullptr}},
     "full"},
    {"kiv_arrows",
     "Arrow keys and pad",
     nullptr,
     "Most games use the ten-key.",
     nullptr,
     nullptr,
     {{"tenkey", "Ten-key 4, 8, 6, 2"}, {"cursor", "Cursor keys"}, {nullptr, nullptr}},
     "cursor"},
    {"kiv_waits",
     "Memory waits",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"on", "As the machine has them"}, {"off", "Off: a little faster"}, {nullptr, nullptr}},
     "on"},
    {"kiv_volume",
     "Loudness",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"1", nullptr}, {"3", nullptr}, {"6", nullptr}, {"10", nullptr}, {nullptr, nullptr}},
     "6"},
    {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, {{nullptr, nullptr}}, nullptr},
};

definition japanese[] = {
    {"kiv_roms",
     "ROMイメージ",
     nullptr,
     "内蔵のオープンROM、またはシステムフォルダーの8801-zun.rom、8801-kiv.rom、8801-4th."
     "rom。次の起動から有効。",
     nullptr,
     nullptr,
     {{"open", "オープンROM"}, {"system", "システムフォルダー"}, {nullptr, nullptr}},
     "open"},
    {"kiv_basic",
     "BASIC",
     nullptr,
     "起動スイッチ。次のリセットから有効。",
     nullptr,
     nullptr,
     {{"zun", "Zun-BASIC"}, {"n", "N-BASIC"}, {nullptr, nullptr}},
     "zun"},
    {"kiv_monitor",
     "モニター",
     nullptr,
     "プログラムから見えるモニターの種類。",
     nullptr,
     nullptr,
     {{"24", "24 kHz (400ライン)"}, {"15", "15 kHz (200ライン)"}, {nullptr, nullptr}},
     "24"},
    {"kiv_aspect",
     "画面比率",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"4:3", "4:3 (モニターと同じ)"}, {"square", "正方形画素"}, {nullptr, nullptr}},
     "4:3"},
    {"kiv_lines",
     "奇数ライン",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"full", "通常"}, {"half", "半分の明るさ"}, {nullptr, nullptr}},
     "full"},
    {"kiv_arrows",
     "矢印キーとパッド",
     nullptr,
     "多くのゲームはテンキーを使います。",
     nullptr,
     nullptr,
     {{"tenkey", "テンキー 4, 8, 6, 2"}, {"cursor", "カーソルキー"}, {nullptr, nullptr}},
     "cursor"},
    {"kiv_waits",
     "メモリーウェイト",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"on", "実機どおり"}, {"off", "なし (少し速い)"}, {nullptr, nullptr}},
     "on"},
    {"kiv_volume",
     "音量",
     nullptr,
     nullptr,
     nullptr,
     nullptr,
     {{"1", nullptr}, {"3", nullptr}, {"6", nullptr}, {"10", nullptr}, {nullptr, nullptr}},
     "6"},
    {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, {{nullptr, nullptr}}, nullptr},
};

// Front ends from before options had descriptions: "Label; default|other|other". Made of the English table.
void announce_as_variables(retro_environment_t environment) {
    constexpr size_t count = sizeof english / sizeof *english;
    static char texts[count][160];
    static retro_variable variables[count];
    for (size_t i = 0; english[i].key != nullptr; ++i) {
        std::strcpy(texts[i], english[i].desc);
        std::strcat(std::strcat(texts[i], "; "), english[i].default_value);
        for (const retro_core_option_value *v = english[i].values; v->value != nullptr; ++v)
            if (std::strcmp(v->value, english[i].default_value) != 0)
                std::strcat(std::strcat(texts[i], "|"), v->value);
        variables[i] = {english[i].key, texts[i]};
    }
    environment(RETRO_ENVIRONMENT_SET_VARIABLES, variables);
}

} // namespace

void announce_options(retro_environment_t environment) {
    unsigned version = 0;
    if (!environment(RETRO_ENVIRONMENT_GET_CORE_OPTIONS_VERSION, &version) || version < 2)
        return announce_as_variables(environment);
    static retro_core_options_v2 us{nullptr, english}, ja{nullptr, japanese};
    unsigned language = RETRO_LANGUAGE_ENGLISH;
    environment(RETRO_ENVIRONMENT_GET_LANGUAGE, &language);
    retro_core_options_v2_intl both{&us, language == RETRO_LANGUAGE_JAPANESE ? &ja : nullptr};
    environment(RETRO_ENVIRONMENT_SET_CORE_OPTIONS_V2_INTL, &both);
}

const char *option_value(retro_environment_t environment, const char *key) {
    retro_variable variable{key, nullptr};
    return environment(RETRO_ENVIRONMENT_GET_VARIABLE, &variable) ? variable.value : nullptr;
}

bool option_is(retro_environment_t environment, const char *key, const char *value) {
    const char *now = option_value(environment, key);
    return now != nullptr && std::strcmp(now, value) == 0;
}

void apply_options(retro_environment_t environment) {
    // A change of monitor restarts the raster, so only what differs is set.
    const auto set = [](const char *key, int32_t value) {
        int32_t now = -1;
        if (kiv_get_setting(key, &now) != KIV_OK || now != value) kiv_set_setting(key, value);
    };
    set("boot_rom", !option_is(environment, "kiv_basic", "n"));
    set("hires_crt", !option_is(environment, "kiv_monitor", "15"));
    set("interlace", option_is(environment, "kiv_lines", "half"));
    set("tenkeyless", option_is(environment, "kiv_arrows", "tenkey"));
    set("z80_no_wait", option_is(environment, "kiv_waits", "off"));
    const char *volume = option_value(environment, "kiv_volume");
    set("soft_volume", volume != nullptr ? std::atoi(volume) : 6);
}
