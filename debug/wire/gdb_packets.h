// Packets of the GDB remote protocol: from bytes of the wire, and to them.
//
//     $data#xx    xx: the sum of the bytes between, two hexadecimal digits
//     + -         the last packet came well, or spoilt
//     0x03        outside of a packet: stop the program
//
// Within a packet } stands in front of a byte that is sent with bit 5 turned over: $ # } *, the last for
// clients that take it as the count of a run. Runs are not sent: not every client knows them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

constexpr size_t longest_packet = 0x10000; // bytes of data that are taken

struct packet_event {
    enum class is : uint8_t {
        packet,
        spoilt,    // its sum is wrong; `data` is what came
        too_long,  // more than longest_packet
        interrupt, // 0x03
        again      // -: the last answer is wanted again
    };
    is what;
    std::string data = {}; // without escapes
};

class packet_reader {
  public:
    void take(std::string_view bytes);
    // The oldest event; nothing: more bytes are wanted.
    std::optional<packet_event> next();
    // Takes an interrupt out, wherever it stands among the events.
    bool take_interrupt();
    size_t waiting() const { return events.size(); } // events
    size_t held() const { return bytes_held; }       // bytes of theirs
    void clear() { *this = {}; }

  private:
    void add(packet_event event);
    void take_data(char c);

    enum class place : uint8_t { outside, data, first_digit, second_digit };
    place at = place::outside;
    bool escaped = false, long_one = false;
    uint8_t sum = 0;
    char digit = 0;
    std::string data;
    std::deque<packet_event> events;
    size_t bytes_held = 0;
};

// The packet with this data.
std::string packet_of(std::string_view data);

// Hexadecimal digits, two a byte, small.
std::string hex_of(std::string_view bytes);
// And back; nothing when it is no such text.
std::optional<std::string> bytes_of_hex(std::string_view hex);
// A number of 1 to 16 digits at the text's start, which is cut off; nothing: there is none.
std::optional<uint64_t> cut_number(std::string_view &text);
