#include "debug/wire/gdb_packets.h"

#include <algorithm>

namespace {

constexpr char digits[] = "0123456789abcdef";
constexpr char escape = '}';

int value_of(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

void packet_reader::add(packet_event event) {
    bytes_held += event.data.size();
    events.push_back(std::move(event));
}

void packet_reader::take_data(char c) {
    if (c == '#') {
        at = place::first_digit;
        return;
    }
    sum = static_cast<uint8_t>(sum + static_cast<uint8_t>(c));
    if (c == escape && !escaped) {
        escaped = true;
        return;
    }
    if (data.size() < longest_packet)
        data += static_cast<char>(escaped ? c ^ 0x20 : c);
    else
        long_one = true;
    escaped = false;
}

void packet_reader::take(std::string_view bytes) {
    for (const char c : bytes) {
        if (c == '$' && at != place::outside) at = place::outside; // the packet before was cut off
        switch (at) {
        case place::outside:
            if (c == '$') {
                at = place::data;
                escaped = long_one = false;
                sum = 0;
                data.clear();
            } else if (c == 0x03) {
                add({packet_event::is::interrupt});
            } else if (c == '-') {
                add({packet_event::is::again});
            }
            break;
        case place::data: take_data(c); break;
        case place::first_digit:
            digit = c;
            at = place::second_digit;
            break;
        case place::second_digit: {
            const bool right = value_of(digit) >= 0 && value_of(c) >= 0 &&
                               (value_of(digit) << 4 | value_of(c)) == sum && !escaped;
            at = place::outside;
            using is = packet_event::is;
            if (long_one)
                add({is::too_long});
            else
                add({right ? is::packet : is::spoilt, std::move(data)});
            data.clear();
            break;
        }
        }
    }
}

std::optional<packet_event> packet_reader::next() {
    if (events.empty()) return std::nullopt;
    packet_event event = std::move(events.front());
    events.pop_front();
    bytes_held -= event.data.size();
    return event;
}

bool packet_reader::take_interrupt() {
    const auto found = std::find_if(events.begin(), events.end(), [](const packet_event &e) {
        return e.what == packet_event::is::interrupt;
    });
    if (found == events.end()) return false;
    events.erase(found);
    return true;
}

std::string packet_of(std::string_view data) {
    std::string packet = "$";
    uint8_t sum = 0;
    const auto put = [&](char c) {
        packet += c;
        sum = static_cast<uint8_t>(sum + static_cast<uint8_t>(c));
    };
    for (const char c : data) {
        const bool to_escape = c == '$' || c == '#' || c == escape || c == '*';
        if (to_escape) put(escape);
        put(static_cast<char>(to_escape ? c ^ 0x20 : c));
    }
    return packet + '#' + digits[sum >> 4] + digits[sum & 0xF];
}

std::string hex_of(std::string_view bytes) {
    std::string hex;
    hex.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        hex += digits[static_cast<uint8_t>(c) >> 4];
        hex += digits[static_cast<uint8_t>(c) & 0xF];
    }
    return hex;
}

std::optional<std::string> bytes_of_hex(std::string_view hex) {
    if (hex.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    bytes.reserve(hex.size() / 2);
    for (size_t i = 0; i < hex.size(); i += 2) {
        const int high = value_of(hex[i]), low = value_of(hex[i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
    }
    return bytes;
}

std::optional<uint64_t> cut_number(std::string_view &text) {
    uint64_t value = 0;
    size_t length = 0;
    while (length < text.size() && value_of(text[length]) >= 0) {
        if (length == 16) return std::nullopt;
        value = value << 4 | static_cast<unsigned>(value_of(text[length++]));
    }
    if (length == 0) return std::nullopt;
    text.remove_prefix(length);
    return value;
}
