#include "debug/wire/gdb_server.h"

#include "api/kiv.h"
#include <algorithm>
#include <chrono>

namespace {

constexpr int a_while = 200;            // ms, between looks at what no wire tells: signals to the program
constexpr int between_answers = 20;     // ms, for a client that takes the answers of one delivery for one
constexpr size_t most_refused = 8;      // at a time
constexpr size_t most_unsent = 8 << 20; // bytes that a client leaves lying
constexpr auto last_words = std::chrono::seconds(1);

void send(platform::wire &to, std::string &bytes) {
    while (!bytes.empty()) {
        const int64_t sent = to.write(bytes.data(), bytes.size());
        if (sent <= 0) return;
        bytes.erase(0, static_cast<size_t>(sent));
    }
}

} // namespace

gdb_place parse_gdb_place(const std::string &text) {
    gdb_place place;
    if (text == "-" || text == "stdio") {
        place.standard_streams = true;
        return place;
    }
    const size_t colon = text.rfind(':');
    std::string port = text;
    if (colon != std::string::npos) {
        place.address = text.substr(0, colon);
        port = text.substr(colon + 1);
        const bool bracketed =
            place.address.size() > 2 && place.address.front() == '[' && place.address.back() == ']';
        if (bracketed) place.address = place.address.substr(1, place.address.size() - 2);
        if (!bracketed && place.address.find(':') != std::string::npos)
            throw debug_error("an IPv6 address is written [ADDRESS]:PORT");
        if (place.address.empty())
            throw debug_error("an address is wanted in front of the colon, or no colon");
    }
    const bool digits =
        !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    const unsigned long number = digits ? std::stoul(port) : 0x10000;
    if (number > 0xFFFF) throw debug_error("a port from 0 to 65535, ADDRESS:PORT or - is wanted");
    place.port = static_cast<uint16_t>(number);
    return place;
}

void gdb_server::open(const gdb_place &place) {
    standard = place.standard_streams;
    if (standard) {
        client = platform::wire::standard_streams();
        stub.attach();
        return;
    }
    const std::string reason = listener.open(place.address, place.port);
    if (!reason.empty()) throw debug_error(reason);
}

// ---- clients -----------------------------------------------------------------------------------------

void gdb_server::welcome() {
    while (platform::wire visitor = listener.accept()) {
        if (client.is_open()) {
            refuse(std::move(visitor));
            continue;
        }
        client = std::move(visitor);
        stub.attach();
        stands = false;
        word("a debugger has come");
    }
}

// What those that were sent away say is taken, so that the word to them arrives.
void gdb_server::drain() {
    std::erase_if(refused, [](platform::wire &w) {
        char bytes[1024];
        int64_t got = 1;
        for (int i = 0; i < 64 && got > 0; ++i) got = w.read(bytes, sizeof bytes);
        return got < 0;
    });
}

void gdb_server::refuse(platform::wire visitor) {
    std::string text = packet_of("E.another debugger is attached");
    send(visitor, text);
    visitor.end_writing();
    if (refused.size() == most_refused) refused.erase(refused.begin());
    refused.push_back(std::move(visitor));
    word("another debugger was sent away");
}

void gdb_server::lose(const char *how) {
    client.close();
    stub.detach();
    word(how);
}

void gdb_server::hear() {
    if (!client.is_open()) return;
    char bytes[0x4000];
    const int64_t got = client.read(bytes, sizeof bytes);
    if (got < 0) return lose("the debugger has gone");
    if (got > 0 || stub.waits()) stub.receive({bytes, static_cast<size_t>(got)});
}

void gdb_server::tell() {
    if (!client.is_open()) return;
    send(client, stub.output());
    if (stub.output().size() > most_unsent) return lose("the debugger does not listen: sent away");
    if (stub.leaves() && stub.output().empty()) {
        client.end_writing();
        lose("the debugger has taken its leave");
    }
}

// ---- turns -------------------------------------------------------------------------------------------

bool gdb_server::run(uint64_t t_states) {
    if (!client.is_open()) driver.go_on();
    const stop_report report = driver.run_slice(t_states);
    if (is_over && is_over()) return false;
    if (report.kind == stop_kind::running) return true;
    if (client.is_open()) {
        stub.has_stopped(report);
        tell();
    } else if (report.kind == stop_kind::processor) {
        stands = true;
        stopped_alone = report;
    }
    return true;
}

bool gdb_server::wait() {
    std::vector<platform::wire_wanted> wires{{&client, !stub.output().empty()}};
    for (const platform::wire &w : refused) wires.push_back({&w, false});
    return platform::wait_for_wires(&listener, wires, stub.waits() ? between_answers : a_while);
}

bool gdb_server::turn(uint64_t t_states) {
    if (machine_runs() || wait()) welcome();
    drain();
    hear();
    tell();
    if (standard && !client.is_open() && !runs_alone) return false;
    if (machine_runs()) return run(t_states);
    return !is_over || !is_over();
}

void gdb_server::end(uint8_t exit_code) {
    stub.has_ended(exit_code);
    const auto until = std::chrono::steady_clock::now() + last_words;
    while (client.is_open() && std::chrono::steady_clock::now() < until) {
        tell();
        if (client.is_open()) platform::wait_for_wires(nullptr, {{&client, true}}, between_answers);
    }
    client.close();
    listener.close();
    refused.clear();
}
