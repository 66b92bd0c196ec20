#include "debug/wire/gdb_server.h"

#include <vector>

namespace {

constexpr int a_while = 200; // ms, between looks at what no wire tells: signals to the program

} // namespace

void gdb_server::open(const gdb_place &place) {
    standard = place.standard_streams;
    if (standard)
        line.take(platform::wire::standard_streams());
    else
        door.open(place);
}

void gdb_server::welcome() {
    while (platform::wire visitor = door.next()) {
        if (line.is_open()) {
            door.refuse(std::move(visitor), "another debugger is attached");
            word("another debugger was sent away");
            continue;
        }
        line.take(std::move(visitor));
        stands = false;
        word("a debugger has come");
    }
}

bool gdb_server::run(uint64_t t_states) {
    if (!line.is_open()) driver.go_on();
    const stop_report report = driver.run_slice(t_states);
    if (is_over && is_over()) return false;
    if (report.kind == stop_kind::running) return true;
    if (line.is_open()) {
        line.stub.has_stopped(report);
        word(line.tell());
    } else if (report.kind == stop_kind::processor) {
        stands = true;
        stopped_alone = report;
    }
    return true;
}

bool gdb_server::wait() {
    std::vector<platform::wire_wanted> wires{{&line.wire(), !line.stub.output().empty()}};
    for (const platform::wire &w : door.sent_away()) wires.push_back({&w, false});
    return platform::wait_for_wires(&door.listening(), wires, line.stub.waits() ? between_answers : a_while);
}

bool gdb_server::turn(uint64_t t_states) {
    if (machine_runs() || wait()) welcome();
    door.drain();
    word(line.hear());
    word(line.tell());
    if (standard && !line.is_open() && !runs_alone) return false;
    if (machine_runs()) return run(t_states);
    return !is_over || !is_over();
}

void gdb_server::end(uint8_t exit_code) {
    line.end(exit_code);
    door.close();
}
