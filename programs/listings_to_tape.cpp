// Records listings one behind the other: listings_to_tape TAPE LISTING... Each is called what its file is
// called.
#include "tools/kiv_run_listing.h"
#include "tools/kiv_run_options.h"

#include <cstdio>
#include <fstream>
#include <iterator>

int main(int argc, char **argv) {
    try {
        std::string tape;
        for (int i = 2; i < argc; ++i) {
            std::ifstream in(argv[i], std::ios::binary);
            if (!in) throw run_failure(std::string(argv[i]) + ": cannot be read");
            tape += listing_tape(std::string(std::istreambuf_iterator<char>(in), {}), argv[i]);
        }
        std::ofstream out(argc > 1 ? argv[1] : "", std::ios::binary);
        if (!(out << tape << std::flush)) throw run_failure("the tape cannot be written");
        return 0;
    } catch (const run_failure &failure) {
        std::fprintf(stderr, "listings_to_tape: %s\n", failure.what());
        return 1;
    }
}
