// What the debug driver has in the machine's slots while it runs.
#pragma once

#include "cpu/z80_cpu.h"
#include "debug/debug_driver.h"
#include "debug/expression.h"
#include <array>

// An instruction that is about to run.
struct debug_place {
    uint64_t t_states; // since the boot
    uint16_t pc;       // where it comes from
    uint16_t sp;       // before it, and before an interrupt's entry
    bool entering;     // an interrupt's routine is entered with it
};

class debug_driver::machinery {
  public:
    explicit machinery(debug_driver &driver_) : driver(driver_) {}

    void compile(); // after every change of stop points and observers
    void aim(aim_kind kind, uint16_t address, memory_bank bank);
    void aim_outside(uint16_t first, uint16_t last);
    stop_report run_slice(uint64_t t_states);
    stop_report back(aim_kind kind);
    stop_report back_to(uint64_t t_states);
    void look_back(size_t count, const std::function<void(uint16_t, uint64_t)> &look);
    void changed() { edited = true; }
    void leave_here();
    bool in_the_past() const { return visiting != nullptr; }
    void another_machine(); // is in the process's place

    static machinery *running; // the one whose functions are in the slots

  private:
    enum mark : uint8_t { mark_execute = 1, mark_read = 2, mark_write = 4 };
    using visitor = std::function<bool(const debug_place &)>;

    struct text_or_expression {
        std::string text;
        expression value; // null: the text
    };
    struct compiled_point {
        uint32_t id = 0;
        expression condition; // null: always
        std::vector<text_or_expression> log;
        bool held = false; // kind condition: at the instruction before
    };

    // Ours while it lives.
    struct slots {
        explicit slots(machinery &m);
        ~slots();
        slots(const slots &) = delete;
        slots &operator=(const slots &) = delete;
    };
    static bool step_hook(z80_cpu &cpu);
    static uint8_t read_hook(uint16_t address, uint32_t *wait);
    static void write_hook(uint16_t address, uint8_t value, uint32_t *wait);
    static uint8_t in_hook(uint16_t port);
    static void out_hook(uint16_t port, uint8_t value);
    static uint32_t interrupt_hook(z80_cpu &cpu, uint8_t level);

    void mark_point(const stop_point &point);
    void compile_log(const std::string &text, compiled_point &into) const;
    bool before_step();
    bool check_points(const debug_place &here);
    bool aim_reached(const debug_place &here);
    void aim_over(const debug_place &here);
    bool hit(size_t index, const stop_report &report); // true: it stops
    template <class Matches> void event(stop_report report, Matches matches);
    void accessed(uint16_t address, uint8_t before, uint8_t value, uint8_t access, bool fetched);
    void port_used(uint16_t port, uint8_t value, uint8_t access);
    void ask_observers();
    void want_stop(const stop_report &report);
    std::optional<stop_report> after_piece(int32_t ended_by);
    stop_report finish(stop_report report);
    uint64_t next_t_states() const;
    bool no_past(uint64_t before) const;

    // Backwards
    struct found_place {
        debug_place place;
        stop_report report;
    };
    class looker; // at a stretch of the past
    class previous_looker;
    class over_looker;
    class call_looker;
    class frame_looker;
    class stop_looker;
    void run_again(const visitor &visit);
    std::optional<found_place> search(uint64_t before, bool to_the_end, looker &looking);
    std::optional<found_place> find_over(uint64_t before);
    stop_report go_to(const found_place &found);
    stop_report nothing_found(uint64_t before);
    uint64_t steps_between(size_t index, uint64_t before);
    void moved();

    debug_driver &driver;
    std::array<uint8_t, 0x10000> marks{};
    std::array<uint8_t, 0x100> port_marks{}; // access_kind
    std::vector<compiled_point> compiled;
    bool attentive = false;        // every step is looked at
    bool always_attentive = false; // for stop points and observers
    bool looks_at_bytes = false;   // stop points for HALT and undefined instructions
    bool tell_memory = false, tell_ports = false;
    uint16_t fetch_next = 0; // the next byte of the running instruction
    uint32_t last_line = 0;  // raster

    std::optional<stop_report> pending; // before the next step
    bool stopped = false;               // by us, not by the processor
    bool edited = false;
    debug_place resumed{UINT64_MAX, 0, 0, false}; // where it stood when it was set going

    aim_kind aimed = aim_kind::none;
    bool aim_until = false; // over: the address with the stack as it was
    uint16_t aim_pc = 0, aim_sp = 0;
    uint16_t aim_last = 0; // outside: aim_pc is the first
    memory_bank aim_bank = memory_bank::any;
    uint64_t steps = 0; // since the aim was taken
    bool last_returned = false;

    const visitor *visiting = nullptr; // the past is run again
    std::vector<stop_report> seen;     // since the step before, while that is done
    bool frame_seen = false;           // likewise
    double looked_through = 0;         // part of the past
};

debug_place place_now();
void bytes_at(uint16_t address, uint8_t bytes[4]);
