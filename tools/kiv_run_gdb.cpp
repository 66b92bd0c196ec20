#include "tools/kiv_run_gdb.h"

#include "debug/wire/gdb_server.h"
#include "tools/kiv_run_bench.h"
#include <cstdio>

namespace {

// A slice of the machine between two looks at the wire: 20 ms of its time, less than one of this computer's.
constexpr uint64_t a_slice = 80000;

void tell(const std::string &line) { std::fprintf(stderr, "kiv-run: %s\n", line.c_str()); }

// What the console says to a line of `monitor`.
std::string monitored(run_bench &bench, const std::string &line) {
    std::vector<std::string> lines;
    bench.collected = &lines;
    bench.console.execute(line);
    bench.collected = nullptr;
    std::string text;
    for (const std::string &l : lines) text += l + "\n";
    return text;
}

} // namespace

bool is_standard_gdb_place(const std::string &place) {
    try {
        return parse_gdb_place(place).standard_streams;
    } catch (const debug_error &error) {
        throw run_failure("--gdb " + place + ": " + error.what());
    }
}

void serve_gdb(const run_options &options, run_bench &bench, const std::function<bool()> &is_over) {
    gdb_server server(bench.driver);
    server.stub().monitor = [&bench](const std::string &line) { return monitored(bench, line); };
    server.is_over = is_over;
    server.runs_alone = options.gdb_alone_runs;
    server.on_word = tell;
    const gdb_place place = parse_gdb_place(options.gdb);
    try {
        server.open(place);
    } catch (const debug_error &error) {
        throw run_failure(std::string("--gdb ") + error.what());
    }
    if (!place.standard_streams)
        tell("a debugger may come to " +
             (place.address.empty() ? std::string("this computer's port ") : place.address + ", port ") +
             std::to_string(server.port()));
    const auto log_before = bench.driver.on_log;
    bench.driver.on_log = [&server](const std::string &line) { server.stub().say(line); };
    bench.console.may_run = false; // the debugger's client has to know what the machine does
    while (server.turn(a_slice))
        if (const auto stop = server.take_stop()) tell(describe(*stop) + "; a debugger may look at it");
    bench.console.may_run = true;
    bench.driver.on_log = log_before;
    server.end(static_cast<uint8_t>(bench.console.exit_code));
}
