// fuzz_basic LINES [SEED]: random lines for the interpreter; faults and figures on the standard output.
// fuzz_basic -FILE: the lines of a file.
#include "tests/fuzz/basic/basic_fuzz.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace {

basic_fuzz_result run(const char *what, const char *seed) {
    if (what[0] != '-')
        return fuzz_basic(std::strtoull(what, nullptr, 10), static_cast<unsigned>(std::atoi(seed)));
    std::vector<std::string> lines;
    std::ifstream in(what + 1);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return replay_basic(lines);
}

} // namespace

int main(int count, char **arguments) {
    const basic_fuzz_result r = run(count > 1 ? arguments[1] : "10000", count > 2 ? arguments[2] : "1");
    for (const basic_fault &fault : r.faults)
        std::printf("---- %s\n%s", fault.what.c_str(), fault.lines.c_str());
    std::printf("%llu lines, %llu tapes, %llu power-ons, %llu stopped by STOP; %llu instructions, %.0f s of "
                "the machine; "
                "%zu faults\n",
                static_cast<unsigned long long>(r.lines), static_cast<unsigned long long>(r.tapes),
                static_cast<unsigned long long>(r.power_ons), static_cast<unsigned long long>(r.stopped),
                static_cast<unsigned long long>(r.instructions), static_cast<double>(r.cycles) / 3993600,
                r.faults.size());
    return r.faults.empty() ? 0 : 1;
}
