// Expressions over the machine: registers, flags, memory, ports, symbols, as conditions and as values.
//
// Registers: A F B C D E H L I R IM IFF1 IFF2 AF BC DE HL IX IY PC SP IXH IXL IYH IYL AF' BC' DE' HL'.
// Flags: F.S F.Z F.H F.P F.N F.C. Memory as the processor sees it: [address], w[address] for a word; of one
// area: main[...], nbasic[...], ext[...], ram[...], blue[...], red[...], green[...], font[...], pcg[...].
// port[n]: what an IN would read, without what it does. Of the run: frame, line (raster), tstates, hits; of
// the access that is looked at: address, value. Operators are C's, from || to unary minus.
#pragma once

#include "debug/symbols.h"
#include <functional>
#include <string>

// Worked out anew at each call.
using expression = std::function<int64_t()>;

// What `address`, `value` and `hits` stand for while a condition is looked at.
struct expression_context {
    int64_t address = 0, value = 0, hits = 0;
};
extern expression_context looked_at;

// Throws debug_error. Names are resolved here.
expression parse_expression(const std::string &text, const symbol_table &symbols);

// Numbers and symbols only, worked out once. Throws debug_error.
int64_t parse_constant(const std::string &text, const symbol_table &symbols);
