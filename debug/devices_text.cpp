#include "debug/devices_text.h"

#include "api/kiv.h"
#include "debug/memory_banks.h"
#include "machine/kiv_machine.h"
#include "machine/run_block.h"
#include <cinttypes>
#include <cstdio>

namespace {

using lines = std::vector<std::pair<std::string, std::string>>;

lines raster(const debug_teller &t) {
    const kiv_machine &m = machine;
    return {{"line", m.vrtc ? t.text_of("vertical blank, %u of %u T-states", m.vblank_clock, m.vblank_clocks)
                            : t.text_of("%u of %u, %u of %u T-states", m.raster_line, m.display_lines,
                                        m.line_clock, m.line_clocks)},
            {"frame", t.text_of("%" PRIu64 ", %u T-states each", run_state.frames, kiv_frame_t_states())},
            {"monitor", m.crt_standard ? "15 kHz" : "24 kHz"},
            {"time", t.text_of("%" PRIu64 " T-states", run_state.cycles)}};
}

lines memory_map(const debug_teller &t) {
    const kiv_machine &m = machine;
    return {{"0000-5FFF", bank_name(bank_at(0))},
            {"6000-7FFF", bank_name(bank_at(0x6000))},
            {"8000-83FF", t.text_of("ram $%04X", ram_behind(0x8000))},
            {"C000-FFFF", bank_name(bank_at(0xC000))},
            {"port 31", t.text_of("$%02X: %s%sgraphics %s", m.port31.load(),
                                  (m.port31 & port31_ram_mode) ? t.say("RAM mode, ") : "",
                                  (m.port31 & port31_nbasic) ? "N-BASIC, " : "",
                                  t.on_off((m.port31 & port31_graphics_on) != 0))},
            {"port 70", t.text_of("$%02X", m.port70)},
            {"port 71", t.text_of("$%02X", m.port71)}};
}

lines crtc(const debug_teller &t) {
    const kiv_machine &m = machine;
    const uint8_t status = m.crtc_status;
    return {{"screen", t.text_of("%u characters, %u rows of %u lines, %s", m.crtc_width, m.crtc_lines,
                                 m.crtc_raster, t.say(m.crtc_mono ? "monochrome" : "colour"))},
            {"port 30", t.text_of("%s columns", m.crtc_wide ? "80" : "40")},
            {"status", t.text_of("$%02X, text %s%s", status, t.on_off((status & crtc_text_off) == 0),
                                 m.crtc_reverse ? t.say(", reverse") : "")},
            {"DMA", t.text_of("%s, %u bytes a row", t.say(m.crtc_burst ? "bursts" : "a character at a time"),
                              m.crtc_line_size)},
            {"attributes", t.text_of("%s%s%s%s", t.on_off(m.crtc_attr_on != 0),
                                     t.say(m.crtc_attr_mono ? ", monochrome" : ", colour"),
                                     m.crtc_attr_transparent ? t.say(", transparent") : "",
                                     m.crtc_attr_special ? t.say(", special") : "")},
            {"cursor", t.text_of("%s, column %u, row %u", t.on_off(m.cursor_enabled != 0), m.cursor_x.load(),
                                 m.cursor_y.load())},
            {"expects", t.text_of("%u parameters, %u taken", m.crtc_state, m.crtc_param_index)}};
}

lines dma(const debug_teller &t) {
    const kiv_machine &m = machine;
    lines l;
    for (int i = 0; i < 4; ++i) {
        const dma_channel &c = m.dma_channels[i];
        l.emplace_back(t.text_of("channel %d", i), t.text_of("address $%04X, %u bytes, mode %u", c.address,
                                                             c.terminal_count, c.transfer_mode));
    }
    l.emplace_back("mode", t.text_of("channel 2 %s, autoload %s", t.on_off(m.dma_ch2_enable != 0),
                                     t.on_off(m.dma_autoload != 0)));
    l.emplace_back("text window", t.text_of("$%04X, %u bytes", m.text_start.load(), m.text_window_size));
    l.emplace_back("owed", t.text_of("%u T-states, %u bytes of the row", m.dma_stall, m.dma_remaining));
    return l;
}

lines interrupts(const debug_teller &t) {
    const kiv_machine &m = machine;
    const char *const names[] = {"USART", "VRTC", t.say("clock")};
    constexpr uint8_t masks[] = {mask_usart, mask_vrtc, mask_clock};
    lines l = {{"processor",
                t.text_of("%s, IM %u, I=$%02X, IFF2 %u%s", t.say(main_cpu.IFF1 ? "enabled" : "disabled"),
                          main_cpu.IM, main_cpu.I, main_cpu.IFF2,
                          (main_cpu.stop_flags & pending_interrupt) ? t.say(", one is being entered") : "")},
               {"port E4", (m.portE4 & 8) ? t.text_of("$%02X: every level passes", m.portE4)
                                          : t.text_of("$%02X: levels below %u pass", m.portE4, m.portE4 & 7)},
               {"port E6", t.text_of("$%02X", m.portE6)}};
    for (int level = 0; level < 3; ++level)
        l.emplace_back(t.text_of("level %d", level),
                       t.text_of("%s, %s%s", names[level], t.say((m.portE6 & masks[level]) ? "on" : "masked"),
                                 (m.interrupt_pending >> level & 1) ? t.say(", waits") : ""));
    l.emplace_back("1/600 s", t.text_of("%u T-states since the last", run_state.clock_counter));
    return l;
}

lines pcg(const debug_teller &t) {
    const kiv_machine &m = machine;
    lines l = {
        {"glyphs", t.say(m.pcg_glyphs_on ? "programmed" : "of the ROM")},
        {"address", t.text_of("$%03X, data $%02X", m.pcg_address_high << 8 | m.pcg_address_low, m.pcg_data)}};
    for (int i = 0; i < 3; ++i) {
        const pcg_counter &c = m.pcg_counters[i];
        l.emplace_back(t.text_of("counter %d", i), t.text_of("divisor $%02X%02X, %u Hz, gate %s", c.high,
                                                             c.low, c.frequency, t.on_off(c.gate != 0)));
    }
    return l;
}

lines usart(const debug_teller &t) {
    const kiv_machine &m = machine;
    return {
        {"receiver", t.text_of("%s%s", t.on_off(m.usart_receiver_on != 0),
                               m.usart_expect_mode ? t.say(", a mode instruction comes next") : "")},
        {"byte", t.text_of("$%02X%s%s", m.usart_received, m.usart_byte_ready ? t.say(", not read yet") : "",
                           m.usart_overrun ? t.say(", one was lost") : "")},
        {"tape", m.tape_image == nullptr ? std::string(t.say("none"))
                                         : t.text_of("%u of %u bytes, motor %s", m.tape_position.load(),
                                                     m.tape_size, t.on_off(kiv_tape_motor() != 0))}};
}

lines palette(const debug_teller &t) {
    constexpr const char *colours[] = {"black", "blue", "red", "magenta", "green", "cyan", "yellow", "white"};
    lines l;
    for (int i = 0; i < 8; ++i) {
        const uint8_t code = machine.palette[i];
        l.emplace_back(t.text_of("port %02X", ports::palette + i),
                       t.text_of("%u %s", code, t.say(colours[code & 7])));
    }
    return l;
}

lines calendar(const debug_teller &t) {
    const kiv_machine &m = machine;
    return {{"port 10", t.text_of("command %u, data %u", m.port10 & 7, m.port10 >> 3 & 1)},
            {"port 40", t.text_of("$%02X: strobe %u, clock %u, beep %s", m.port40, m.port40 >> 1 & 1,
                                  m.port40 >> 2 & 1, t.on_off((m.port40 & 0x20) != 0))}};
}

lines keyboard(const debug_teller &t) {
    lines l;
    for (uint32_t row = 0; row < static_cast<uint32_t>(key_rows); ++row)
        if (kiv_matrix_row(row) != 0xFF)
            l.emplace_back(t.text_of("row %X", row), t.text_of("$%02X", kiv_matrix_row(row)));
    if (l.empty()) l.emplace_back("keys", t.say("none is down"));
    return l;
}

} // namespace

std::vector<device_text> devices_now(debug_words words) {
    const debug_teller t{words};
    std::vector<device_text> all = {
        {"raster", raster(t)},    {"memory", memory_map(t)},     {"crtc", crtc(t)},
        {"dma", dma(t)},          {"interrupts", interrupts(t)}, {"pcg", pcg(t)},
        {"usart", usart(t)},      {"palette", palette(t)},       {"calendar", calendar(t)},
        {"keyboard", keyboard(t)}};
    for (device_text &d : all) {
        d.name = t.say(d.name);
        for (auto &[what, now] : d.lines) what = t.say(what.c_str());
    }
    return all;
}
