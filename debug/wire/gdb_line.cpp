#include "debug/wire/gdb_line.h"

#include <chrono>
#include <utility>

namespace {

constexpr size_t most_refused = 8;        // at a time
constexpr size_t most_unsent = 8 << 20;   // bytes that a client leaves lying
constexpr size_t most_meanwhile = 0x8000; // bytes that are taken in while a packet is worked on
constexpr size_t a_read = 0x4000;
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

// ---- a client ----------------------------------------------------------------------------------------

gdb_line::gdb_line(debug_driver &driver_) : stub(driver_), driver(driver_) {
    others_work = std::exchange(driver.on_work, [this](double) { look_for_interrupt(); });
}

gdb_line::~gdb_line() { driver.on_work = others_work; }

void gdb_line::take(platform::wire visitor) {
    client = std::move(visitor);
    heard_meanwhile = 0;
    stub.attach();
}

void gdb_line::close() {
    client.close();
    stub.detach();
}

std::string gdb_line::hear() {
    if (!is_open()) return {};
    heard_meanwhile = 0;
    char bytes[a_read];
    const int64_t got = client.read(bytes, sizeof bytes);
    if (got < 0) {
        close();
        return "the debugger has gone";
    }
    if (got > 0 || stub.waits()) stub.receive({bytes, static_cast<size_t>(got)});
    return {};
}

std::string gdb_line::tell() {
    if (!is_open()) return {};
    send(client, stub.output());
    const bool deaf = stub.output().size() > most_unsent;
    if (!deaf && !(stub.leaves() && stub.output().empty())) return {};
    if (!deaf) client.end_writing();
    close();
    return deaf ? "the debugger does not listen: sent away" : "the debugger has taken its leave";
}

// A long way back is given up when the client says so, or goes.
void gdb_line::look_for_interrupt() {
    char bytes[a_read];
    const bool room = is_open() && heard_meanwhile < most_meanwhile;
    const int64_t got = room ? client.read(bytes, sizeof bytes) : 0;
    if (got > 0) heard_meanwhile += static_cast<size_t>(got);
    if (got < 0 || stub.interrupted_by({bytes, static_cast<size_t>(got)})) driver.ask_to_stop();
}

void gdb_line::end(uint8_t exit_code) {
    stub.has_ended(exit_code);
    const auto until = std::chrono::steady_clock::now() + last_words;
    while (is_open() && std::chrono::steady_clock::now() < until) {
        tell();
        if (is_open()) platform::wait_for_wires(nullptr, {{&client, true}}, between_answers);
    }
    close();
}

// ---- the door ----------------------------------------------------------------------------------------

void gdb_door::open(const gdb_place &place) {
    const std::string reason = listener.open(place.address, place.port);
    if (!reason.empty()) throw debug_error(reason);
}

void gdb_door::refuse(platform::wire visitor, const std::string &why) {
    std::string text = packet_of("E." + why);
    send(visitor, text);
    visitor.end_writing();
    if (refused.size() == most_refused) refused.erase(refused.begin());
    refused.push_back(std::move(visitor));
}

// What those that were sent away say is taken, so that the word to them arrives.
void gdb_door::drain() {
    std::erase_if(refused, [](platform::wire &w) {
        char bytes[1024];
        int64_t got = 1;
        for (int i = 0; i < 64 && got > 0; ++i) got = w.read(bytes, sizeof bytes);
        return got < 0;
    });
}

void gdb_door::close() {
    listener.close();
    refused.clear();
}
