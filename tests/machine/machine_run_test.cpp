// Batches of passes against plain ones, on programs made by chance that do everything to the machine at once.
#include "machine_fixture.h"
#include "tests/common/two_ways.h"

namespace {

constexpr uint16_t program_start = 0x9000, program_end = 0xA000;
constexpr uint16_t waiting_code = 0xB400; // and in every memory that waits
constexpr uint16_t handler = 0xB200, vectors = 0xB100, stack = 0xB000;

// Writes Z80 code by chance. It stays in RAM that no bank covers and seldom writes over itself.
class program_writer {
  public:
    explicit program_writer(unsigned seed) : random(seed) {}

    bytes write() {
        put({0x31, stack & 0xFF, stack >> 8, 0x3E, vectors >> 8, 0xED, 0x47, 0xED,
             0x56}); // LD SP; LD I,A; IM 1
        start_display();
        while (code.size() < program_end - program_start - 64) snippet();
        put({0xC3, (program_start + 9) & 0xFF, program_start >> 8}); // JP back
        return code;
    }

  private:
    int any(int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); }
    void put(std::initializer_list<int> values) {
        for (const int value : values) code.push_back(static_cast<uint8_t>(value));
    }
    void out(int port, int value) { put({0x3E, value, 0xD3, port}); } // LD A,n; OUT (n),A

    void start_display() {
        out(0x51, 0x00);
        for (const int parameter :
             {0xCE | any(2) << 7, 0x93 + any(8), any(4) ? 0x6F + any(3) : any(256), 0x58, any(256)})
            out(0x50, parameter);
        out(0x51, 0x20);
        out(0x64, any(256)), out(0x64, 0xC0 + any(64)), out(0x65, any(256)), out(0x65, 0x80 + any(64));
        out(0x68, 0xE4);
    }
    void start_tape() {
        for (const int value : {0x40, 0x4E, 0x14 + any(2)}) out(0x21, value);
        out(0x30, 0x08 + any(2) + any(2) * 2);
    }
    void port_storm() {
        constexpr int ports[] = {0x0C, 0x0F, 0x02, 0x10, 0x20, 0x21, 0x30, 0x31, 0x40, 0x50, 0x51, 0x53, 0x56,
                                 0x5C, 0x5D, 0x5F, 0x5F, 0x65, 0x68, 0x71, 0x78, 0xE4, 0xE6, 0xE6, 0xF0};
        for (int i = any(6); i >= 0; --i) out(ports[any(sizeof ports / sizeof *ports)], any(256));
        out(0x70, 0xC0 + any(64)); // the window keeps off the program
    }
    void port_reads() {
        constexpr int ports[] = {0x00, 0x09, 0x20, 0x20, 0x21, 0x30, 0x40,
                                 0x5C, 0x70, 0x71, 0xE4, 0xE6, 0xFE};
        for (int i = any(4); i >= 0; --i)
            put({0xDB, ports[any(13)], 0x85, 0x6F});              // IN A,(n); ADD A,L; LD L,A
        if (any(3) == 0) put({0x0E, ports[any(13)], 0xED, 0x58}); // LD C,n; IN E,(C)
    }
    // Reads and writes through HL, anywhere but where the program is.
    void memory_access() {
        put({0x21, any(256), any(2) ? 0xC0 + any(64) : any(0x84)}); // LD HL,nn
        constexpr int one_byte[] = {0x7E, 0x77, 0x34, 0x36, 0xBE, 0x86, 0x70, 0x4E};
        for (int i = any(5); i >= 0; --i) {
            const int opcode = one_byte[any(8)];
            put({opcode});
            if (opcode == 0x36) put({any(256)});
            put({0x23});
        }
        if (any(3) == 0)
            put({0x22, any(256), 0xC0 + any(63), 0x2A, any(256), any(0x84)}); // LD (nn),HL; LD HL,(nn)
    }
    void block_move() {
        put({0x21, any(256), any(256), 0x11, any(256), 0xC0 + any(60), 0x01, any(256), any(3), 0xED, 0xB0});
    }
    void wait_loop() { put({0x06, 1 + any(255), 0x00, 0x10, 0xFD}); }                  // LD B,n; NOP; DJNZ
    void long_wait() { put({0x11, any(256), any(16), 0x1B, 0x7A, 0xB3, 0x20, 0xFB}); } // DE down to 0
    void interrupts() {
        constexpr int modes[] = {0x56, 0x56, 0x5E, 0x46};
        switch (any(6)) {
        case 0: put({0xF3}); break;                   // DI
        case 1: put({0xED, modes[any(4)]}); break;    // IM
        case 2: put({0xED, 0x5F, 0x80, 0x47}); break; // LD A,R; ADD A,B; LD B,A
        case 3: out(0xE4, 1 + any(8)); break;
        case 4: out(0xE6, any(8)); break;
        default: put({0xFB}); // EI
        }
    }
    // Memory that waits is read from and run from: the ROM's upper quarter, the window, the planes.
    void waiting_memory() {
        out(0x31, any(256) & ~6);
        switch (any(5)) {
        case 0: out(0x71, 0xFE), call(0x6000); break;
        case 1: out(0x71, 0xFF), call(0x6000); break;
        case 2: out(0x70, waiting_code >> 8), call(0x8000); break;
        case 3: out(0x5C + any(3), 0), call(0xC000), out(0x5F, 0); break;
        default:
            out(0x71, 0xFD + any(3)), out(0x70, 0xFB + any(5));                           // over the top
            put({0x2A, any(256), 0x60, 0xED, 0x5B, any(256), 0x80 + any(4), 0x19, 0x45}); // LD HL,(nn) ...
        }
        out(0x70, 0xC0 + any(64));
    }
    void call(int address) { put({0xCD, address & 0xFF, address >> 8}); }
    void snippet() {
        switch (any(13)) {
        case 12: waiting_memory(); break;
        case 0: port_storm(); break;
        case 1: port_reads(); break;
        case 2:
        case 3: memory_access(); break;
        case 4: block_move(); break;
        case 5:
        case 6: wait_loop(); break;
        case 7: long_wait(); break;
        case 8:
            if (any(3) == 0) start_display();
            break;
        case 9:
            if (any(3) == 0) start_tape();
            break;
        default: interrupts();
        }
    }

    std::minstd_rand random;
    bytes code;
};

struct MachineRun : Machine {
    static void load(uint16_t address, const bytes &values) {
        std::copy(values.begin(), values.end(), machine.ram + address);
    }
    // At the program's first instruction, also after a reset.
    static void enter(unsigned seed) {
        load(0x0038, {0xC3, handler & 0xFF, handler >> 8});
        load(vectors,
             {handler & 0xFF, handler >> 8, handler & 0xFF, handler >> 8, handler & 0xFF, handler >> 8});
        // PUSH AF; IN A,(20h) or a short wait; POP AF; EI, or its absence; RET
        load(handler, {0xF5, static_cast<uint8_t>(seed % 2 ? 0xDB : 0x3E), 0x20, 0xF1,
                       static_cast<uint8_t>(seed % 8 ? 0xFB : 0x00), 0xC9});
        load(program_start, program_writer(seed).write());
        // LD HL,(nn); LD A,(nn); ADD A,L; LD L,A; LD BC,nn; LD (HL),B; RET
        const bytes code = {0x2A, 0x23, 0x81, 0x3A, 0x01, 0x60, 0x85, 0x6F, 0x01, 0x34, 0xC0, 0x70, 0xC9};
        for (uint8_t *const at : {machine.main_rom + 0x6000, machine.ext_rom + 0, machine.ram + waiting_code,
                                  machine.gvram[0] + 0, machine.gvram[1] + 0, machine.gvram[2] + 0})
            std::copy(code.begin(), code.end(), at);
        std::memset(machine.main_rom + 0x0038, 0xC9, 1);
        std::memset(machine.nbasic_rom + 0x0038, 0xC9, 1);
        main_cpu.PC = program_start;
    }
    // Noise with records of machine code among it, which lead to graphics or text.
    static bytes tape_of(unsigned seed) {
        std::minstd_rand random(seed);
        bytes tape;
        for (int i = 0; i < 3000; ++i) {
            tape.push_back(static_cast<uint8_t>(random() >> 8));
            if (random() % 100 != 0) continue;
            const auto high = static_cast<uint8_t>(0xC0 + random() % 64);
            tape.insert(tape.end(), {0x3A, high, 0x00, 0x00, 0x3A, static_cast<uint8_t>(random() % 30)});
        }
        return tape;
    }
};

TEST_F(MachineRun, BatchesDoWhatPlainPassesDo) {
    const struct {
        const char *name;
        bool charge_waits, standard_monitor, tape, resets;
        uint8_t port31;
    } rows[] = {
        {"ROM mode", true, false, false, false, 0x31},
        {"RAM mode without waits", false, false, false, false, 0x33},
        {"N-BASIC, 15 kHz", true, true, false, false, 0x35},
        {"a tape in the deck", true, false, true, false, 0x31},
        {"resets, tape, 15 kHz, no waits", false, true, true, true, 0x31},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        uint64_t run = 0;
        for (unsigned seed = 1; seed <= 12 && !HasFailure(); ++seed) {
            two_ways ways;
            ways.seed = seed;
            ways.charge_waits = row.charge_waits;
            ways.power_on = [&] {
                TearDown();
                SetUp();
                host_callbacks_init();
                if (row.tape) insert_tape(tape_of(seed));
                machine.cassette_set_stopped(1);
                machine.crt_standard = row.standard_monitor;
                machine.timing_reset();
                machine.port31 = row.port31;
                enter(seed);
            };
            ways.at_stop = [&](size_t stop) {
                machine.key_matrix[stop % 12] = static_cast<uint8_t>(stop);
                if (!row.resets || stop % 50 != 49) return;
                machine.machine_reset(machine);
                main_cpu.z80_reset(main_cpu);
                enter(seed + static_cast<unsigned>(stop));
            };
            run += ways.compare(1'500'000);
        }
        EXPECT_GT(run, 6'000'000u) << "the programs stop too early to show much";
    }
}

#ifdef KIV_FIRMWARE_DIR
// The ROM set, and its demonstration from two seconds on.
TEST_F(MachineRun, TheDemonstrationIsTheSameInBatches) {
    constexpr uint32_t demo[] = {'D', 'E', 'M', 'O', 0x0D};
    constexpr uint64_t begins = 2 * default_clock_hz, a_key = default_clock_hz / 4;
    for (const bool standard_monitor : {false, true}) {
        two_ways ways;
        ways.power_on = [&] {
            TearDown();
            SetUp();
            const std::pair<const char *, uint8_t *> images[] = {
                {"zun", machine.main_rom}, {"kiv", machine.nbasic_rom}, {"4th", machine.ext_rom}};
            for (const auto &[name, rom] : images) {
                const std::string image = get_file(std::string(KIV_FIRMWARE_DIR "/8801-") + name + ".rom");
                ASSERT_FALSE(image.empty());
                std::copy(image.begin(), image.end(), rom);
            }
            machine.crt_standard = standard_monitor;
            machine.timing_reset();
        };
        ways.at_stop = [&](size_t) {
            reset_keyboard(machine);
            if (run_state.cycles < begins) return;
            const uint64_t at = run_state.cycles - begins;
            if (at / a_key < std::size(demo) && at % a_key < a_key / 2) key_press(demo[at / a_key]);
        };
        EXPECT_GT(ways.compare(10 * uint64_t{default_clock_hz}), 9u * default_clock_hz);
        EXPECT_NE(std::count(machine.gvram[0], machine.gvram[0] + plane_size, 0), plane_size)
            << "the demonstration draws";
    }
}
#endif

int reads, steps;

// Whoever puts a function of his own into a slot hears of every byte and every pass.
TEST_F(MachineRun, OtherFunctionsInTheSlotsAreCalledEveryTime) {
    enter(1);
    main_cpu.mem_read = [](uint16_t address, uint32_t *wait) { return ++reads, mem_read(address, wait); };
    run_state_init();
    run_passes(10000, true);
    EXPECT_GT(reads, static_cast<int>(run_state.pass_counter));
    main_cpu.mem_read = mem_read;
    machine.machine_step = [](kiv_machine &m, z80_cpu &cpu) { ++steps, machine_step(m, cpu); };
    const uint32_t before = run_state.pass_counter;
    run_passes(10000, true);
    EXPECT_EQ(static_cast<uint32_t>(steps), run_state.pass_counter - before);
    EXPECT_EQ(main_cpu.pages, &z80_no_pages) << "between runs every byte goes through the slots";
}

} // namespace
