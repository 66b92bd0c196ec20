// The settings file: its defaults, its reading rules, and what is written back.
#include "app/settings_file.h"
#include "tests/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

class SettingsFile : public testing::Test {
  protected:
    temporary_folder folder;
    const std::string path = folder / "KIV.INI";
};

TEST_F(SettingsFile, DefaultsAreWrittenInTheTablesOrder) {
    put_file(path, "");
    ASSERT_TRUE(write_settings_file(path, read_settings_file(path)));
    std::string text = get_file(path);
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    EXPECT_EQ(text, "[Default]\nz80_no_wait=0\ndma_gain=20\nhard_volume=-4\nsoft_volume=1\nuse_videomem=1\n"
                    "dma_load=100\nsync_vblank=0\ntenkeyless=1\nscreensize=0\ntxt_on_demand=0\ninterlace=0\n"
                    "boot_rom=1\nhires_crt=1\n");
}

// What a value of the file becomes, and is written back as.
TEST_F(SettingsFile, ReadingRules) {
    constexpr struct {
        setting_index setting;
        const char *in;
        int read;
    } cases[] = {
        {setting_z80_no_wait, "1", 1},   {setting_z80_no_wait, "2", 0},       {setting_dma_gain, "500", 500},
        {setting_dma_gain, "-3", -3},    {setting_hard_volume, "-100", -100}, {setting_hard_volume, "77", 77},
        {setting_soft_volume, "33", 33}, {setting_use_videomem, "0", 1},      {setting_dma_load, "12abc", 12},
        {setting_dma_load, "abc", 0},    {setting_sync_vblank, "2", 0},       {setting_tenkeyless, "2", 0},
        {setting_tenkeyless, "0", 0},    {setting_screensize, "2", 1},        {setting_screensize, "-1", 1},
        {setting_txt_on_demand, "1", 1}, {setting_interlace, "3", 0},         {setting_boot_rom, "9", 1},
        {setting_boot_rom, "0", 0},      {setting_hires_crt, "0", 0},         {setting_hires_crt, "2", 0},
    };
    for (const auto &c : cases) {
        const std::string key = setting_rules[c.setting].key;
        SCOPED_TRACE(key + "=" + c.in);
        put_file(path, "[Default]\n" + key + "=" + c.in + "\n");
        setting_values expected = default_settings();
        expected[c.setting] = c.read;
        EXPECT_EQ(read_settings_file(path), expected);
        ASSERT_TRUE(write_settings_file(path, expected));
        const std::string written = c.setting == setting_dma_gain && c.read < 0
                                        ? std::to_string(static_cast<unsigned>(c.read))
                                        : std::to_string(c.read);
        EXPECT_NE(get_file(path).find(key + "=" + written), std::string::npos) << get_file(path);
    }
}

TEST_F(SettingsFile, OtherLinesAndSectionsSurviveAWrite) {
    put_file(path, "; mine\n[Other]\ndma_gain=7\n[default]\nDMA_GAIN=21\nunknown=x\n");
    setting_values v = read_settings_file(path);
    EXPECT_EQ(v[setting_dma_gain], 21);
    v[setting_dma_gain] = 22;
    ASSERT_TRUE(write_settings_file(path, v));
    const std::string text = get_file(path);
    for (const char *kept : {"; mine", "[Other]", "dma_gain=7", "unknown=x"})
        EXPECT_NE(text.find(kept), std::string::npos) << kept << " in\n" << text;
    EXPECT_EQ(read_settings_file(path), v);
    EXPECT_EQ(read_settings_file(path, "Other")[setting_dma_gain], 7);
}

} // namespace
