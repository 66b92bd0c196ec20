// Who listens to a debugged machine and writes down what it does: every instruction, where the time goes,
// which lines have run.
#pragma once

#include "debug/debug_observer.h"
#include "debug/symbols.h"
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

// Takes text that is to be written behind the earlier text.
using text_sink = std::function<void(const std::string &)>;

// A line an instruction: address, what it took, text, the registers before it. No running totals, so that two
// traces differ only where the programs do.
//
//     8004  17 CD1080   CALL print          A=41 F=Sz.h.pnc BC=0003 DE=8000 HL=9100 IX=0000 IY=0000 SP=BF00
class instruction_trace final : public debug_observer {
  public:
    instruction_trace(const symbol_table &names, text_sink write_);
    void step(uint16_t pc, uint64_t t_states, bool entering) override;
    void interrupt(uint8_t level) override;
    void moved(bool another) override;
    // Writes what is still held back. The last instruction's time is not known: "--".
    void finish();

  private:
    void flush(const std::string &took);
    const symbol_table &symbols;
    text_sink write;
    std::string head, tail; // of the instruction under way: before and behind what it took
    uint64_t began = 0;
};

// The registers on one line, as the trace has them.
std::string registers_line();
std::string flags_text(uint8_t f); // "S.h.", a capital is a set flag

// T-states by address and by routine, with who called whom. A routine begins where a call or an interrupt
// goes; returns are seen by the stack, so that a routine which drops its return address has ended, too.
class profile final : public debug_observer {
  public:
    explicit profile(const symbol_table &names);
    void step(uint16_t pc, uint64_t t_states, bool entering) override;
    void interrupt(uint8_t level) override;
    void moved(bool another) override;
    void redirected() override;

    // What it has counted until now, the most expensive first. `times`: calls, or instructions.
    struct spent {
        uint16_t address;
        std::string routine;
        uint64_t own, with_calls, times; // T-states
    };
    std::vector<spent> by_routine() const;
    std::vector<spent> by_address() const; // `with_calls` is `own`
    // Callgrind's format, for kcachegrind and callgrind_annotate.
    std::string callgrind() const;
    // The `count` routines that took most themselves: a line each.
    std::string table(size_t count) const;

  private:
    profile ended_now() const; // a copy in which all that runs has returned
    struct routine {
        uint16_t address;
        std::string name;
        uint64_t own = 0, with_calls = 0, calls = 0;
        std::map<uint16_t, std::pair<uint64_t, uint64_t>> lines; // address: T-states, instructions
        struct call {
            uint64_t count = 0, t_states = 0;
        };
        std::map<std::pair<uint16_t, size_t>, call> called; // from, routine
        unsigned depth = 0;                                 // how often it is on the stack
    };
    struct active {
        size_t routine;
        uint16_t sp;         // at the call, before it
        uint16_t from;       // address of the call
        uint64_t began;      // T-states
        uint64_t interrupts; // that `interrupted` held then
        bool by_interrupt;
    };
    size_t routine_at(uint16_t address);
    void charge(uint64_t t_states);
    void enter(uint16_t address, uint16_t from, bool by_interrupt, uint64_t t_states);
    void leave(uint16_t sp, uint64_t t_states);
    void leave_one(uint64_t t_states);

    const symbol_table &symbols;
    std::vector<routine> routines;
    std::unordered_map<uint32_t, size_t> by_place; // bank and address
    std::vector<active> stack;
    std::pair<uint64_t, uint64_t> *line = nullptr; // of the instruction under way
    bool calling = false;                          // it is a call
    uint16_t last_pc = 0, last_sp = 0, last_length = 0;
    uint64_t began = 0;
    uint64_t interrupted = 0; // T-states of interrupts' routines that have ended
};

// How often each instruction has run, by memory; over the lines of the listings that the symbols know.
class coverage final : public debug_observer {
  public:
    explicit coverage(const symbol_table &names) : debug_observer(wants_steps), symbols(names) {}
    void step(uint16_t pc, uint64_t t_states, bool entering) override;
    // lcov's tracefile; lines that hold data are no lines of it.
    std::string lcov() const;
    // "132 of 150 lines, 88.0 %".
    std::string summary() const;

  private:
    std::map<std::string, std::map<uint32_t, uint64_t>> by_file() const;
    uint64_t count(memory_bank bank, uint16_t address) const;

    const symbol_table &symbols;
    std::map<memory_bank, std::vector<uint64_t>> counts;
    memory_bank last_bank = memory_bank::open;
    std::vector<uint64_t> *last = nullptr;
};
