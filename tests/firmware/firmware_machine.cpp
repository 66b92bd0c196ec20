#include "firmware/firmware_machine.h"

#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "resources/resources.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>

namespace {

heard_sounds sounds;
uint32_t passes;

const sound_listener listener = {
    [] {
        if (!sounds.beeping) ++sounds.beeps;
        sounds.beeping = true;
    },
    [] { sounds.beeping = false; },
    [](uint16_t frequency, uint32_t channel) {
        sounds.tones.push_back({frequency, channel});
    },
    [](uint32_t) {},
    [] {},
    [] {},
};

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool load(const char *name, uint8_t *area, size_t size) {
    const std::string image = read_file(std::string(KIV_FIRMWARE_DIR "/") + name);
    if (image.size() != size) return false;
    for (size_t i = 0; i < size; ++i) area[i] = static_cast<uint8_t>(image[i]);
    return true;
}

// The characters stand in the font's source beside their codes.
std::map<int, std::string> read_characters() {
    std::map<int, std::string> characters;
    std::ifstream in(KIV_SOURCE_DIR "/resources/font.txt");
    const std::string digits = "0123456789ABCDEF";
    for (std::string line; std::getline(in, line);) {
        if (line.size() < 4 || line[2] != ' ') continue;
        const size_t high = digits.find(line[0]), low = digits.find(line[1]);
        if (high != std::string::npos && low != std::string::npos)
            characters[static_cast<int>(high * 16 + low)] = line.substr(3);
    }
    return characters;
}

std::string utf8(unsigned code_point) { // 0x0800-0xFFFF
    return {static_cast<char>(0xE0 | code_point >> 12), static_cast<char>(0x80 | (code_point >> 6 & 63)),
            static_cast<char>(0x80 | (code_point & 63))};
}

std::string character(int code, bool semigraphic) {
    static const std::map<int, std::string> characters = read_characters();
    if (semigraphic) {
        // Braille counts its dots 1 2 3 down the left, 4 5 6 down the right, then 7 and 8 below them.
        const int braille_bit[8] = {0, 1, 2, 6, 3, 4, 5, 7};
        unsigned dots = 0;
        for (int bit = 0; bit < 8; ++bit)
            if (code >> bit & 1) dots |= 1u << braille_bit[bit];
        return utf8(0x2800 + dots);
    }
    if (code >= 0xF8) return utf8(0x25A1);
    const auto found = characters.find(code);
    return found == characters.end() ? " " : found->second;
}

// Rows hand attributes down, so a row is decoded after those above it.
void decode_rows(int last) {
    for (int row = 0; row <= last; ++row) {
        machine.text_row_fetch(static_cast<uint32_t>(row));
        machine.text_row_decode(static_cast<uint32_t>(row));
    }
}

} // namespace

heard_sounds &heard() { return sounds; }

bool firmware_power_on(const firmware_setup &setup) {
    register_program_resources();
    sounds = {};
    passes = 0;
    host_callbacks_listen(listener);
    machine_init(
        machine, [] {}, [] {});
    machine_restart_clock_counter();
    if (!load("8801-kiv.rom", machine.nbasic_rom, rom_size)) return false;
    if (!load("8801-zun.rom", machine.main_rom, rom_size)) return false;
    if (setup.expansion && !load("8801-4th.rom", machine.ext_rom, ext_rom_size)) return false;
    const platform::resource font = platform::find_resource(platform::resource_type::font, font_resource_id);
    for (uint32_t i = 0; i < font_size; ++i) machine.font_rom[i] = font.data[i];
    for (uint32_t i = 0; i < font_work_size; ++i) machine.font_work[i] = font.data[i];
    machine.boot_rom = static_cast<uint8_t>(setup.zun ? 1 : 0);
    machine.crt_standard = setup.standard_monitor ? 1 : 0;
    machine.timing_reset();
    machine.select_scanline_colours(0);
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    z80_reset(main_cpu);
    return true;
}

bool firmware_run(int frames) {
    while (frames > 0) {
        const pass_outcome outcome = machine_pass(passes++, true);
        if (outcome == pass_outcome::stopped) return false;
        if (outcome == pass_outcome::frame) --frames;
    }
    return true;
}

std::string firmware_stop() {
    char text[64];
    std::snprintf(text, sizeof text, "the CPU stopped at 0x%04X", static_cast<unsigned>(main_cpu.trace_pc));
    return text;
}

bool firmware_type(uint32_t virtual_key, bool shift) {
    constexpr uint32_t shift_key = 0x10;
    if (shift) key_press(shift_key);
    key_press(virtual_key);
    if (!firmware_run(2)) return false;
    key_release(virtual_key);
    if (shift) key_release(shift_key);
    return firmware_run(2);
}

std::string screen_text(int row, int column, int columns) {
    decode_rows(row);
    std::string text;
    for (int c = column; c < column + columns; ++c)
        text += character(machine.row_chars[c], (machine.cell_attr[c] & cell_semigraphic) != 0);
    return text;
}

std::string screen_text() {
    std::string text;
    for (int row = 0; row < text_rows; ++row) {
        std::string line = screen_text(row);
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

uint8_t screen_attribute(int row, int column) {
    decode_rows(row);
    return machine.cell_attr[column];
}

int graphics_dot(int x, int y) {
    int colour = 0;
    for (int plane = 0; plane < 3; ++plane)
        colour |= (machine.gvram[plane][80 * y + x / 8] >> (7 - x % 8) & 1) << plane;
    return colour;
}
