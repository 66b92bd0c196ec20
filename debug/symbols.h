// Names of addresses, and the source lines that stand behind them, out of what assemblers leave.
#pragma once

#include "debug/memory_banks.h"
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

struct source_line {
    std::string file; // the listing
    uint32_t number;  // of its line, from 1
    std::string text; // without address and bytes
};

class symbol_table {
  public:
    // The names of a symbol file: pasmo's and sjasmplus's NAME EQU n, z88dk's maps NAME = $n ; ... and
    // DEFC NAME = n. With a bank, they name addresses only while that memory is seen there. Several files
    // add up; of two equal names the later counts. Returns how many; 0: it is no symbol file.
    size_t add_symbols(std::string_view text, memory_bank bank = memory_bank::any);
    // The lines of a listing that begin with an address and the bytes there: pasmo -d, and those with a line
    // number in front. Returns how many have bytes.
    size_t add_listing(std::string_view text, const std::string &file, memory_bank bank = memory_bank::any);
    void add(const std::string &name, uint16_t value, memory_bank bank = memory_bank::any);
    void clear();

    std::optional<uint16_t> find(const std::string &name) const;
    // The name of exactly that address as memory is seen now; empty for none.
    std::string name_of(uint16_t address) const;
    // The nearest name at or below it with the distance, "print+5", or the address, "$1234".
    std::string place_of(uint16_t address) const;
    const source_line *line_of(uint16_t address) const; // null for none
    const std::multimap<uint16_t, std::pair<memory_bank, source_line>> &lines() const { return by_line; }
    const std::map<std::string, std::pair<uint16_t, memory_bank>> &names() const { return by_name; }

  private:
    std::map<std::string, std::pair<uint16_t, memory_bank>> by_name;
    std::multimap<uint16_t, std::pair<memory_bank, std::string>> by_address;
    std::multimap<uint16_t, std::pair<memory_bank, source_line>> by_line;
};

// A number as assemblers write it: $1F, #1F, 0x1F, 1Fh, %101, 0b101, 31. Nothing when it is none.
std::optional<uint32_t> parse_number(std::string_view text);
