#include "debug/memory_faults.h"

#include "api/kiv.h"
#include "debug/memory_banks.h"
#include "machine/kiv_machine.h"
#include <cstdio>

namespace {

constexpr uint16_t past_text = 0x100; // bytes past the window that are still its overrun

constexpr std::pair<const char *, fault_kind> names[] = {
    {"unwritten", fault_unwritten},   {"under-rom", fault_under_rom}, {"stack", fault_stack},
    {"interrupts", fault_interrupts}, {"text", fault_text},           {"port", fault_port},
};

template <class... Values> std::string text_of(const char *format, Values... values) {
    char text[128];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

bool is_plane(memory_bank bank) {
    return bank == memory_bank::blue || bank == memory_bank::red || bank == memory_bank::green;
}

} // namespace

const char *fault_name(fault_kind kind) {
    for (const auto &[name, k] : names)
        if (k == kind) return name;
    return "all";
}

std::optional<uint8_t> fault_named(const std::string &name) {
    if (name == "all") return uint8_t{fault_every};
    for (const auto &[text, kind] : names)
        if (name == text) return uint8_t{kind};
    return std::nullopt;
}

bool port_takes_writes(uint8_t port) {
    if (port < 0x40) return true; // PCG, calendar, USART, modes
    switch (port) {
    case ports::system:
    case ports::crtc_parameter:
    case ports::crtc_command:
    case ports::layers:
    case ports::dma_mode:
    case ports::window_page:
    case ports::expansion:
    case ports::window_next:
    case ports::interrupt_level:
    case ports::interrupt_mask:
    case ports::tape_load: return true;
    default: return port >= ports::palette && port < ports::dma_address + 8;
    }
}

memory_faults::memory_faults(const symbol_table &table, uint8_t kinds_, bool of_roms,
                             std::function<void(const std::string &)> tell_)
    : debug_observer(wants_steps | wants_memory | wants_ports), symbols(table), kinds(kinds_), roms(of_roms),
      tell(std::move(tell_)) {
    if (kiv_t_states() != 0) was_written.set();
}

void memory_faults::fault(fault_kind kind, const std::string &what) { fault(kind, what, main_cpu.trace_pc); }

void memory_faults::fault(fault_kind kind, const std::string &what, uint16_t once_for) {
    const uint16_t by = main_cpu.trace_pc;
    if ((kinds & kind) == 0 || (!roms && bank_at(by) != memory_bank::ram)) return;
    if (!told.emplace(kind, once_for).second) return;
    const std::string line =
        std::string("fault: ") + fault_name(kind) + ": " + symbols.place_of(by) + " " + what +
        text_of(" (at $%04X, frame %llu)", by, static_cast<unsigned long long>(kiv_frames()));
    tell(line);
    if (!stops) return;
    wants_to_stop = true;
    stop_text = line;
}

void memory_faults::step(uint16_t, uint64_t t_states, bool) {
    if (main_cpu.IFF1 != 0 || (main_cpu.stop_flags & restoring) != 0) {
        enabled_once = true;
        off_since = UINT64_MAX;
        return;
    }
    if (!enabled_once) return; // a machine begins with interrupts off
    if (off_since == UINT64_MAX) {
        off_since = t_states;
        off_at = main_cpu.trace_pc;
    } else if (t_states - off_since > kiv_frame_t_states()) {
        fault(fault_interrupts,
              "runs with interrupts off for longer than a frame, since " + symbols.place_of(off_at), off_at);
        off_since = t_states; // once a frame is enough
    }
}

void memory_faults::read(uint16_t address, uint8_t, bool fetched) {
    if (bank_at(address) != memory_bank::ram || was_written[ram_behind(address)]) return;
    fault(fault_unwritten, text_of(fetched ? "runs $%04X, which nothing has written"
                                           : "reads $%04X, which nothing has written",
                                   address));
}

void memory_faults::check_text(uint16_t address) {
    const uint32_t size = machine.text_window_size;
    const auto into = static_cast<uint16_t>(address - machine.text_start);
    const auto to = static_cast<uint16_t>(machine.text_start - address);
    const uint16_t by = main_cpu.trace_pc;
    if (into < size) {
        writes_text.set(by);
    } else if (size != 0 && writes_text[by] && (into - size < past_text || to <= past_text)) {
        const bool behind = into - size < past_text;
        fault(fault_text, text_of("writes $%04X, %u bytes %s the text window", address,
                                  static_cast<unsigned>(behind ? into - size + 1 : to),
                                  behind ? "behind" : "in front of"));
    }
}

void memory_faults::written(uint16_t address, uint8_t, uint8_t) {
    const memory_bank bank = bank_written(address);
    if (is_plane(bank)) {
        const auto above = static_cast<uint16_t>(address - main_cpu.SP);
        if (above < 2)
            fault(fault_stack, text_of("pushes to $%04X, where the %s plane is", address, bank_name(bank)));
        return;
    }
    was_written.set(ram_behind(address));
    if (bank_at(address) != memory_bank::ram)
        fault(fault_under_rom,
              text_of("writes $%04X, under the %s ROM", address, bank_name(bank_at(address))));
    check_text(ram_behind(address));
}

void memory_faults::out(uint16_t port, uint8_t value) {
    if ((port & 0xFF) == ports::tape_load) was_written.set(); // the deck writes by itself, wherever it wants
    if (!port_takes_writes(static_cast<uint8_t>(port)) && (port & 0xFF) != port_of_a_test)
        fault(fault_port, text_of("writes $%02X to port $%02X, which nothing takes", value, port & 0xFF));
}

// A machine that was changed, nobody knows how, has nothing unwritten any more.
void memory_faults::moved(bool another) {
    off_since = UINT64_MAX;
    if (another && kiv_t_states() != 0) was_written.set();
}

void memory_faults::poked(uint16_t address, size_t size) {
    for (size_t i = 0; i < size; ++i) was_written.set(ram_behind(static_cast<uint16_t>(address + i)));
}
