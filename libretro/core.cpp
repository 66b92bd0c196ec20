// Kiv as a libretro core: a frame a call, on the flat interface. The front end brings picture, sound, keys,
// pad and files; its save states, rewind, run-ahead and netplay are the machine's snapshots.
//
// Content is optional: without any the machine starts its BASIC. A tape (.cmt) goes into the deck, a listing
// (.bas) too, and is loaded and run; a memory dump (.kiv) goes on where it was saved.
#include "api/kiv.h"
#include "api/kiv_open_roms.h"
#include "libretro/auto_start.h"
#include "libretro/keys.h"
#include "libretro/options.h"
#include "libretro/tapes.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <libretro.h>
#include <string>
#include <strings.h>

namespace {

constexpr double host_rate = 48000;
constexpr size_t most_samples = 8192; // of one frame at host_rate; 0.2 s at the most

retro_environment_t environment;
retro_video_refresh_t show;
retro_audio_sample_batch_t play;
retro_input_poll_t poll;
retro_input_state_t input;
retro_log_printf_t front_log;

bool pad_down[pad_buttons];
uint32_t announced_frame; // T-states of a frame, as the front end was told
bool stop_told = false;

void tell(const char *text, unsigned frames = 240) {
    retro_message message{text, frames};
    environment(RETRO_ENVIRONMENT_SET_MESSAGE, &message);
    if (front_log != nullptr) front_log(RETRO_LOG_INFO, "%s\n", text);
}

double frames_a_second() { return static_cast<double>(kiv_clock_hz()) / kiv_frame_t_states(); }

bool read_rom(const char *folder, const char *name, int32_t socket) {
    const std::string path = std::string(folder) + "/" + name;
    std::FILE *file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        tell((path + ": not found").c_str());
        return false;
    }
    static uint8_t image[0x8000 + 1]; // a byte more shows that a file is too long
    const size_t size = std::fread(image, 1, sizeof image, file);
    std::fclose(file);
    if (kiv_rom(socket, image, size) == KIV_OK) return true;
    tell((path + ": " + kiv_error_text()).c_str());
    return false;
}

bool insert_roms() {
    if (!option_is(environment, "kiv_roms", "system")) return kiv_open_roms() == KIV_OK;
    const char *folder = nullptr;
    if (!environment(RETRO_ENVIRONMENT_GET_SYSTEM_DIRECTORY, &folder) || folder == nullptr) {
        tell("The front end has no system folder");
        return false;
    }
    return read_rom(folder, "8801-zun.rom", KIV_ROM_MAIN) &&
           read_rom(folder, "8801-kiv.rom", KIV_ROM_NBASIC) && read_rom(folder, "8801-4th.rom", KIV_ROM_EXT);
}

// The clock begins at the host's time and goes on with the machine's, so that a state replays alike.
void start_calendar() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const kiv_date date{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                        local.tm_hour,        local.tm_min,     local.tm_sec};
    kiv_calendar_start(&date);
}

bool ends_with(const char *path, const char *ending) {
    const size_t length = path != nullptr ? std::strlen(path) : 0, tail = std::strlen(ending);
    return length >= tail && strcasecmp(path + length - tail, ending) == 0;
}

bool load_dump(const retro_game_info &content) {
    if (content.data == nullptr) return false;
    kiv_run_frame(); // a dump goes through the memory map of a machine that runs
    return kiv_dump_load(content.data, content.size) == KIV_OK;
}

bool load_content(const retro_game_info &content) {
    if (ends_with(content.path, ".kiv")) return load_dump(content);
    if (!tapes_begin(content)) return false;
    if (ends_with(content.path, ".bas")) auto_start_begin();
    return true;
}

void read_pad() {
    poll();
    for (unsigned button = 0; button < pad_buttons; ++button) {
        const bool down = input(0, RETRO_DEVICE_JOYPAD, 0, button) != 0;
        if (down == pad_down[button]) continue;
        pad_down[button] = down;
        if (const uint32_t key = virtual_key_of_button(button); key != no_virtual_key) kiv_key(key, down);
    }
}

void on_key(bool down, unsigned key, uint32_t, uint16_t) {
    if (const uint32_t virtual_key = virtual_key_of(key); virtual_key != no_virtual_key)
        kiv_key(virtual_key, down);
}

void fill_av_info(retro_system_av_info &info) {
    info.geometry = {KIV_WIDTH, KIV_HEIGHT, KIV_WIDTH, KIV_HEIGHT,
                     option_is(environment, "kiv_aspect", "square") ? 1.6F : 4.0F / 3.0F};
    info.timing = {frames_a_second(), host_rate};
}

// Another monitor or screen mode has another rate.
void announce_timing() {
    if (kiv_frame_t_states() == announced_frame) return;
    announced_frame = kiv_frame_t_states();
    retro_system_av_info info{};
    fill_av_info(info);
    environment(RETRO_ENVIRONMENT_SET_SYSTEM_AV_INFO, &info);
}

void options_changed() {
    bool changed = false;
    if (!environment(RETRO_ENVIRONMENT_GET_VARIABLE_UPDATE, &changed) || !changed) return;
    apply_options(environment);
    retro_system_av_info info{};
    fill_av_info(info);
    environment(RETRO_ENVIRONMENT_SET_GEOMETRY, &info.geometry);
}

void hand_over_sound() {
    static int16_t stereo[2 * most_samples];
    const int16_t *samples = kiv_resampled();
    const size_t count = kiv_resampled_count() < most_samples ? kiv_resampled_count() : most_samples;
    for (size_t i = 0; i < count; ++i) stereo[2 * i] = stereo[2 * i + 1] = samples[i];
    for (size_t done = 0; done < count;) {
        const size_t taken = play(stereo + 2 * done, count - done);
        if (taken == 0) break;
        done += taken;
    }
}

void tell_stop() {
    if (stop_told) return;
    stop_told = true;
    const char *why[] = {"", "HALT", "an undefined instruction", "an instruction that is not emulated",
                         "an interrupt in no interrupt mode"};
    char text[96];
    std::snprintf(text, sizeof text, "The processor stopped at $%04X: %s", kiv_stop_address(),
                  why[kiv_stop_reason()]);
    tell(text);
}

constexpr size_t state_head = 16;

void put_number(uint8_t *at, uint32_t value) {
    for (int i = 0; i < 4; ++i) at[i] = static_cast<uint8_t>(value >> 8 * i);
}

uint32_t number_at(const uint8_t *at) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value |= uint32_t{at[i]} << 8 * i;
    return value;
}

} // namespace

extern "C" {

RETRO_API unsigned retro_api_version(void) { return RETRO_API_VERSION; }

RETRO_API void retro_set_environment(retro_environment_t callback) {
    environment = callback;
    bool without_content = true;
    environment(RETRO_ENVIRONMENT_SET_SUPPORT_NO_GAME, &without_content);
    announce_options(environment);
}
RETRO_API void retro_set_video_refresh(retro_video_refresh_t callback) { show = callback; }
RETRO_API void retro_set_audio_sample(retro_audio_sample_t) {}
RETRO_API void retro_set_audio_sample_batch(retro_audio_sample_batch_t callback) { play = callback; }
RETRO_API void retro_set_input_poll(retro_input_poll_t callback) { poll = callback; }
RETRO_API void retro_set_input_state(retro_input_state_t callback) { input = callback; }

RETRO_API void retro_init(void) {
    retro_log_callback log{};
    front_log = environment(RETRO_ENVIRONMENT_GET_LOG_INTERFACE, &log) ? log.log : nullptr;
    announce_tapes(environment);
}
RETRO_API void retro_deinit(void) { tapes_clear(); }

RETRO_API void retro_get_system_info(retro_system_info *info) {
    *info = {"Kiv", kiv_version(), "cmt|bas|kiv", false, false};
}

RETRO_API void retro_get_system_av_info(retro_system_av_info *info) {
    *info = {};
    announced_frame = kiv_frame_t_states();
    fill_av_info(*info);
}

RETRO_API bool retro_load_game(const retro_game_info *content) {
    retro_pixel_format format = RETRO_PIXEL_FORMAT_XRGB8888;
    if (!environment(RETRO_ENVIRONMENT_SET_PIXEL_FORMAT, &format)) {
        tell("The front end has no pixels of 32 bits");
        return false;
    }
    retro_keyboard_callback keyboard{on_key};
    environment(RETRO_ENVIRONMENT_SET_KEYBOARD_CALLBACK, &keyboard);
    if (!insert_roms()) return false;
    start_calendar();
    apply_options(environment);
    kiv_set_sample_rate(host_rate);
    if (kiv_boot() != KIV_OK) {
        tell(kiv_error_text());
        return false;
    }
    std::memset(pad_down, 0, sizeof pad_down);
    stop_told = false;
    starting = {};
    if (content == nullptr || load_content(*content)) return true;
    tell("The file could not be read");
    return false;
}

RETRO_API void retro_unload_game(void) { tapes_clear(); }
RETRO_API bool retro_load_game_special(unsigned, const retro_game_info *, size_t) { return false; }

RETRO_API void retro_reset(void) {
    kiv_reset();
    starting = {};
    stop_told = false;
}

RETRO_API void retro_run(void) {
    options_changed();
    read_pad();
    auto_start_step();
    if (kiv_run_frame() == KIV_RUN_STOPPED) tell_stop();
    announce_timing();
    show(kiv_pixels(), KIV_WIDTH, KIV_HEIGHT, KIV_WIDTH * sizeof(uint32_t));
    hand_over_sound();
}

// A state: the snapshot's length and where the start of a listing stands, each number in four bytes with the
// low one first; then the snapshot. What follows is not looked at, for the front end asks for one size that
// holds every state.
RETRO_API size_t retro_serialize_size(void) {
    return state_head + kiv_snapshot_limit(KIV_SNAPSHOT_WITHOUT_TAPE);
}

RETRO_API bool retro_serialize(void *data, size_t size) {
    if (size < state_head) return false;
    auto *bytes = static_cast<uint8_t *>(data);
    const size_t room = size - state_head;
    const size_t length = kiv_snapshot_save(KIV_SNAPSHOT_WITHOUT_TAPE, bytes + state_head, room);
    put_number(bytes, static_cast<uint32_t>(length));
    put_number(bytes + 4, starting.stage);
    put_number(bytes + 8, starting.since);
    put_number(bytes + 12, starting.position);
    if (length != 0) std::memset(bytes + state_head + length, 0, room - length);
    return length != 0;
}

RETRO_API bool retro_unserialize(const void *data, size_t size) {
    if (size < state_head) return false;
    const auto *bytes = static_cast<const uint8_t *>(data);
    const size_t length = number_at(bytes);
    if (length > size - state_head) return false;
    if (load_with_its_tape(bytes + state_head, length)) {
        starting = {static_cast<uint8_t>(number_at(bytes + 4)), number_at(bytes + 8), number_at(bytes + 12)};
        stop_told = false;
        return true;
    }
    tell(kiv_error_text());
    return false;
}

RETRO_API void retro_set_controller_port_device(unsigned, unsigned) {}
RETRO_API void retro_cheat_reset(void) {}
RETRO_API void retro_cheat_set(unsigned, bool, const char *) {}
RETRO_API unsigned retro_get_region(void) { return RETRO_REGION_NTSC; }
RETRO_API void *retro_get_memory_data(unsigned) { return nullptr; }
RETRO_API size_t retro_get_memory_size(unsigned) { return 0; }

} // extern "C"
