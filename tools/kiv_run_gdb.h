// kiv-run --gdb: the machine is driven by a debugger over a wire.
#pragma once

#include <functional>
#include <string>

class run_bench;
struct run_options;

// Serves one debugger after the other, until `is_over`. Throws run_failure when it cannot wait there.
void serve_gdb(const run_options &options, run_bench &bench, const std::function<bool()> &is_over);

// Throws run_failure: that is no place for --gdb. True: it is the standard input and output.
bool is_standard_gdb_place(const std::string &place);
