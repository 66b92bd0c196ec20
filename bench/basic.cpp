// Kiv BASIC: the eight classic loops, each on lines of its own as the magazines printed them. T-states from
// the first to the last line, with the text display off (no DMA, memory waits as they are) and on; beside
// them seconds, what must be reached and what is aimed at.
#include "api/typing.h"
#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "machine/rom_loader.h"
#include "resources/resources.h"

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

namespace {

struct loop {
    const char *lines;
    double must, goal; // seconds, display off
};

// A byte to a port that nothing listens to marks the beginning and the end.
constexpr uint8_t mark_port = 0xFD;
#define BEGIN "1 OUT 253,1\n"
#define END(line) line " OUT 253,2\n"

const loop loops[] = {
    {BEGIN "100 FOR K=1 TO 1000\n110 NEXT K\n" END("200"), .6, .35},
    {BEGIN "100 K=0\n110 K=K+1\n120 IF K<1000 THEN 110\n" END("200"), 1.3, .9},
    {BEGIN "100 K=0\n110 K=K+1\n120 A=K/K*K+K-K\n130 IF K<1000 THEN 110\n" END("200"), 4.4, 2.5},
    {BEGIN "100 K=0\n110 K=K+1\n120 A=K/2*3+4-5\n130 IF K<1000 THEN 110\n" END("200"), 4.4, 3.6},
    {BEGIN "100 K=0\n110 K=K+1\n120 A=K/2*3+4-5\n130 GOSUB 300\n140 IF K<1000 THEN 110\n" END(
         "200") "210 END\n300 RETURN\n",
     4.8, 4.2},
    {BEGIN "90 DIM M(5)\n100 K=0\n110 K=K+1\n120 A=K/2*3+4-5\n130 GOSUB 300\n140 FOR L=1 TO 5\n150 NEXT L\n"
           "160 IF K<1000 THEN 110\n" END("200") "210 END\n300 RETURN\n",
     8.8, 6},
    {BEGIN "90 DIM M(5)\n100 K=0\n110 K=K+1\n120 A=K/2*3+4-5\n130 GOSUB 300\n140 FOR L=1 TO 5\n145 M(L)=A\n"
           "150 NEXT L\n160 IF K<1000 THEN 110\n" END("200") "210 END\n300 RETURN\n",
     14.9, 9.5},
    {BEGIN "100 K=0\n110 K=K+1\n120 A=K^2\n130 B=LOG(K)\n140 C=SIN(K)\n150 IF K<100 THEN 110\n" END("200"),
     2.2, 1.8}};

constexpr uint64_t begin_frame = 60; // BASIC has said Ok
uint64_t cycles, marked[3];

void out(uint16_t port, uint8_t value) {
    if ((port & 0xFF) == mark_port && value < 3) marked[value] = cycles;
    io_out(port, value);
}

bool power_on() {
    register_program_resources();
    z80_fix_seed(1);
    calendar_fix_time({1982, 11, 1, 12, 0, 0});
    machine_init(
        machine, [] {}, [] {});
    host_callbacks_listen({[] {}, [] {}, [](uint16_t, uint32_t) {}, [](uint32_t) {}, [] {}, [] {}});
    machine_restart_clock_counter();
    if (const std::string error = load_rom_images(KIV_FIRMWARE_DIR); !error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return false;
    }
    machine.boot_rom = 1;
    machine.timing_reset();
    machine.init_ram(machine);
    map_cursor_keys(false);
    z80_install(main_cpu, mem_read, mem_write, io_in, out);
    cycles = 0;
    return true;
}

// Runs `program`, typed in; T-states between its marks.
std::optional<uint64_t> measure(const std::string &program, bool display) {
    if (!power_on()) return std::nullopt;
    typist keys;
    for (const char c : program + "RUN\n") {
        key_stroke stroke{};
        if (!stroke_of(static_cast<uint8_t>(c), stroke) || !keys.add(stroke)) return std::nullopt;
    }
    marked[1] = marked[2] = 0;
    uint64_t frames = 0, typed = 0;
    for (uint32_t iteration = 0; marked[2] == 0; ++iteration) {
        if (!display && marked[1] != 0) machine.dma_stall = 0;
        const pass_outcome outcome = machine_pass(iteration, true);
        if (outcome == pass_outcome::stopped || frames > typed + 4000) return std::nullopt;
        cycles += main_cpu.step_cycles;
        if (outcome != pass_outcome::frame || ++frames < begin_frame) continue;
        keys.at_frame(frames - begin_frame);
        if (keys.waiting() != 0) typed = frames;
    }
    if (marked[1] == 0) return std::nullopt;
    return marked[2] - marked[1];
}

} // namespace

int main() {
    std::printf("| loop | T-states, display off | s | T-states, display on | s | must | goal |\n"
                "|---|---|---|---|---|---|---|\n");
    int number = 0;
    for (const loop &l : loops) {
        ++number;
        const auto off = measure(l.lines, false), on = measure(l.lines, true);
        if (!off || !on) {
            std::fprintf(stderr, "loop %d does not end\n", number);
            return 1;
        }
        std::printf("| %d | %llu | %.2f | %llu | %.2f | %.2f | %.2f |\n", number,
                    static_cast<unsigned long long>(*off), static_cast<double>(*off) / default_clock_hz,
                    static_cast<unsigned long long>(*on), static_cast<double>(*on) / default_clock_hz, l.must,
                    l.goal);
    }
}
