// What programs do to memory and ports that they hardly mean, told as it happens.
#pragma once

#include "debug/debug_observer.h"
#include "debug/symbols.h"
#include <bitset>
#include <functional>
#include <optional>
#include <set>
#include <string>

enum fault_kind : uint8_t {
    fault_unwritten = 1,  // RAM is read, or run, that nothing has written since power-on
    fault_under_rom = 2,  // a write lands in the RAM under a ROM that is seen there
    fault_stack = 4,      // the stack is in a plane
    fault_interrupts = 8, // interrupts are off for longer than a frame
    fault_text = 16,      // what writes into the text window goes on past its end or its start
    fault_port = 32,      // an OUT to a port that nothing takes
    fault_every = 63,
};
const char *fault_name(fault_kind kind);
std::optional<uint8_t> fault_named(const std::string &name); // also "all"

// Whether an OUT to the port does something, by the machine's port map.
bool port_takes_writes(uint8_t port);

class memory_faults final : public debug_observer {
  public:
    // `kinds`: of fault_kind. Told are faults of instructions in RAM, where programs are; `of_roms`: of all.
    // Each is told once for each instruction that makes it. Memory counts as unwritten only when this listens
    // from the machine's power-on.
    memory_faults(const symbol_table &names, uint8_t kinds_, bool of_roms,
                  std::function<void(const std::string &)> tell_);
    bool stops = false;          // the machine, besides telling
    int32_t port_of_a_test = -1; // somebody listens to it though the machine has none
    uint64_t count() const { return told.size(); }

    void step(uint16_t pc, uint64_t t_states, bool entering) override;
    void read(uint16_t address, uint8_t value, bool fetched) override;
    void written(uint16_t address, uint8_t before, uint8_t value) override;
    void out(uint16_t port, uint8_t value) override;
    void moved(bool another) override;
    void poked(uint16_t address, size_t size) override;

  private:
    void fault(fault_kind kind, const std::string &what);
    void fault(fault_kind kind, const std::string &what, uint16_t once_for);
    void check_text(uint16_t address);

    const symbol_table &symbols;
    uint8_t kinds;
    bool roms;
    std::function<void(const std::string &)> tell;
    std::bitset<0x10000> was_written;            // of the RAM
    std::bitset<0x10000> writes_text;            // instructions, by address
    std::set<std::pair<uint8_t, uint16_t>> told; // kind, instruction
    bool enabled_once = false;                   // interrupts were on
    uint64_t off_since = UINT64_MAX;             // T-states
    uint16_t off_at = 0;
};
