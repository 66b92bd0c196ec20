#include "tests/fuzz/basic/basic_fuzz.h"

#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "machine/rom_loader.h"
#include "machine/run_block.h"
#include "resources/resources.h"

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>

namespace {

constexpr uint64_t line_cycles = 300000;   // then STOP is pressed,
constexpr uint64_t stop_cycles = 40000000; // and this long, again and again
constexpr uint64_t key_cycles = 4 * 72000; // a key is held and released for so long
constexpr int lines_between_power_ons = 500;
constexpr uint32_t vk_stop = 0x08;

// ---- The watched machine

std::map<std::string, uint16_t> symbols;
std::bitset<0x10000> entries; // addresses with a label

void read_symbols(const char *rom) {
    std::ifstream in(std::string(KIV_FIRMWARE_DIR "/") + rom + ".sym");
    for (std::string name, equ, text; in >> name >> equ >> text;) {
        const auto value = static_cast<uint16_t>(std::strtoul(text.c_str(), nullptr, 16));
        if (std::isupper(static_cast<unsigned char>(name[0])) == 0) entries.set(value);
        symbols.emplace(name, value);
    }
}

// First addresses and ends of what nobody writes.
struct area {
    uint16_t first, end;
};
std::vector<area> forbidden;
std::string write_fault;
bool plane_selected() { return machine.gvram_select != 0 && machine.gvram_select != 0xF8; }

std::string hex(unsigned value) {
    char text[8];
    std::snprintf(text, sizeof text, "%04X", value);
    return text;
}

void watched_write(uint16_t address, uint8_t value, uint32_t *wait) {
    if (address >= 0xC000 && plane_selected()) return mem_write(address, value, wait);
    for (const area &a : forbidden)
        if (address >= a.first && address < a.end && write_fault.empty())
            write_fault = "a write to " + hex(address) + " at " + hex(main_cpu.PC);
    mem_write(address, value, wait);
}

uint8_t peek(unsigned address) {
    uint32_t wait = 0;
    return mem_read(static_cast<uint16_t>(address), &wait);
}

bool is_call(uint8_t opcode) { return opcode == 0xCD || (opcode & 0xC7) == 0xC4; }
bool is_return(uint8_t opcode) { return opcode == 0xC9 || (opcode & 0xC7) == 0xC0; }

// A jump of the expansion ROM's table, which far_call enters.
bool far_entry(uint16_t address) {
    const int place = address - symbols["EXPANSION_TABLE"];
    return (machine.port71 & 1) == 0 && place >= 0 && place < 3 * 80 && place % 3 == 0 &&
           peek(address) == 0xC3;
}

// Where a return may lead: behind a call, behind the byte that follows a CALL expect, or to a label.
bool return_place(uint16_t address) {
    return entries[address] || is_call(peek(address - 3u)) || far_entry(address) ||
           (peek(address - 4u) == 0xCD &&
            (peek(address - 3u) | peek(address - 2u) << 8) == symbols["expect"]);
}

class watched_machine {
  public:
    basic_fuzz_result result;

    watched_machine() {
        read_symbols("8801-zun.rom");
        read_symbols("8801-4th.rom");
        const auto at = [](const char *name) { return symbols.at(name); };
        forbidden = {{at("FLOAT_END"), at("DEVICE_RAM")},
                     {at("DEVICES_USED"), at("BASIC_RAM")},
                     {at("WORK_BASIC_END"), at("TOOL_RAM")},
                     {at("TEXT_END"), 0xFFFF}};
        boot();
    }

    // Types `line` and runs until the next one is asked for. False after a fault.
    bool line(const std::string &text) {
        lines += text + '\n';
        ++result.lines;
        give(text);
        if (!until_asked(line_cycles) && !failed()) {
            ++result.stopped;
            for (uint64_t begun = cycles; !asked && !failed();) {
                if (cycles - begun > stop_cycles) {
                    if (stop_is_off()) break;
                    fault("STOP does not lead back");
                    break;
                }
                key_press(vk_stop);
                until_asked(key_cycles);
                key_release(vk_stop);
                if (!asked) until_asked(key_cycles);
            }
        }
        if (failed() || !asked || ++since_power_on >= lines_between_power_ons) {
            const bool whole = !failed();
            power_on();
            return whole;
        }
        return true;
    }

    void tape(std::string bytes) {
        static std::string image;
        image = std::move(bytes);
        machine.tape_image = reinterpret_cast<uint8_t *>(image.data());
        machine.tape_size = static_cast<uint32_t>(image.size());
        machine.tape_position = 0;
        machine.cassette_set_stopped(1);
        ++result.tapes;
    }

    // A line is asked for by a program.
    bool in_program() const { return asked_by_program; }

  private:
    void boot() {
        register_program_resources();
        z80_fix_seed(1);
        calendar_fix_time({1982, 11, 1, 12, 0, 0});
        machine_init(
            machine, [] {}, [] {});
        host_callbacks_listen({[] {}, [] {}, [](uint16_t, uint32_t) {}, [](uint32_t) {}, [] {}, [] {}});
        run_state.clock_counter = 0;
        if (const std::string error = load_rom_images(KIV_FIRMWARE_DIR); !error.empty())
            throw std::runtime_error(error);
        machine.boot_rom = 1;
        machine.timing_reset();
        machine.init_ram(machine);
        map_cursor_keys(false);
        z80_install(main_cpu, mem_read, watched_write, io_in, io_out);
        watching = false;
        if (!until_asked(40000000)) throw std::runtime_error("BASIC does not come up");
        watching = true;
        write_fault.clear();
        first_machine = machine;
        first_cpu = main_cpu;
    }

    void power_on() {
        machine = first_machine;
        main_cpu = first_cpu;
        asked = true;
        asked_by_program = false;
        lines.clear();
        write_fault.clear();
        trouble.clear();
        since_power_on = 0;
        ++result.power_ons;
    }

    static bool stop_is_off() {
        return peek(symbols["stop_off"]) != 0 || peek(symbols["stop_target"]) != 0 ||
               peek(symbols["stop_target"] + 1u) != 0;
    }

    bool failed() const { return !trouble.empty(); }
    void fault(const std::string &what) {
        trouble = what;
        result.faults.push_back({what, lines});
    }

    // What the editor would do: the line's text, and back to who asked.
    void give(const std::string &text) {
        const uint16_t buffer = symbols["LINE_TEXT"];
        uint32_t wait = 0;
        for (size_t i = 0; i <= text.size(); ++i)
            mem_write(static_cast<uint16_t>(buffer + i), static_cast<uint8_t>(text.c_str()[i]), &wait);
        main_cpu.HL = buffer;
        main_cpu.AF = static_cast<uint16_t>(main_cpu.AF & ~flag_c);
        main_cpu.PC = static_cast<uint16_t>(peek(main_cpu.SP) | peek(main_cpu.SP + 1u) << 8);
        main_cpu.SP = static_cast<uint16_t>(main_cpu.SP + 2);
        asked = false;
    }

    // True when a line is asked for within so many T-states.
    bool until_asked(uint64_t most) {
        static const uint16_t console_line = symbols.at("console_line"),
                              console_input = symbols.at("console_input");
        const uint64_t end = cycles + most;
        while (cycles < end) {
            if (main_cpu.PC == console_line || main_cpu.PC == console_input) {
                asked_by_program = main_cpu.PC == console_input;
                return asked = true;
            }
            step();
            if (failed()) return false;
        }
        return false;
    }

    void step() {
        const uint16_t pc = main_cpu.PC, sp = main_cpu.SP;
        const uint8_t opcode = peek(pc);
        machine.dma_stall = 0;
        const pass_outcome outcome = machine_pass(++iteration, false);
        cycles += main_cpu.step_cycles;
        ++result.instructions;
        result.cycles += main_cpu.step_cycles;
        if (!watching) return;
        if (outcome == pass_outcome::stopped)
            return fault("the processor stops at " + hex(main_cpu.trace_pc) + " for reason " +
                         std::to_string(main_cpu.stop_reason));
        if (!write_fault.empty()) return fault(write_fault);
        const uint16_t next = main_cpu.PC;
        if (next >= 0x8000) return fault("code at " + hex(next) + ", from " + hex(pc));
        const bool clearing = main_cpu.IFF1 == 0 && main_cpu.SP >= 0xC000; // planes, by PUSH
        if ((main_cpu.SP < symbols_tokens_end || main_cpu.SP > symbols_stack) && !clearing)
            return fault("the stack at " + hex(main_cpu.SP) + ", from " + hex(pc));
        if (main_cpu.trace_pc != pc) return; // an interrupt came first
        if ((is_call(opcode) && main_cpu.SP == static_cast<uint16_t>(sp - 2)) || opcode == 0xE9) {
            if (!entries[next]) fault("a call of " + hex(next) + " at " + hex(pc));
        } else if (is_return(opcode) && main_cpu.SP == static_cast<uint16_t>(sp + 2)) {
            if (!return_place(next)) fault("a return to " + hex(next) + " at " + hex(pc));
        }
    }

    const uint16_t symbols_tokens_end = (read_symbols("8801-zun.rom"), symbols.at("TOKENS_END"));
    const uint16_t symbols_stack = symbols.at("STACK");
    bool asked = true, asked_by_program = false, watching = false;
    uint64_t cycles = 0;
    uint32_t iteration = 0;
    int since_power_on = 0;
    std::string lines, trouble;
    kiv_machine first_machine{};
    z80_cpu first_cpu{};
};

// ---- Lines

// Words that reach past the interpreter by design are left out: POKE OUT USR MON BLOAD DEMO WAIT.
const std::vector<std::string> words = {
    "ABS(",   "AND",     "ASC(",   "ATN(",    "AUTO",    "BASE",   "BEEP",    "BSAVE",     "CDBL(",   "CHR$(",
    "CINT(",  "CIRCLE",  "CLEAR",  "CLOAD",   "CLS",     "COLOR",  "CONSOLE", "CONT",      "COS(",    "CSAVE",
    "CSNG(",  "CSRLIN",  "DATA",   "DATE$",   "DEF",     "DEFINT", "DEFSTR",  "DELETE",    "DIM",     "DRAW",
    "EDIT",   "ELSE",    "END",    "EQV",     "ERASE",   "ERL",    "ERR",     "ERROR",     "EXP(",    "FIX(",
    "FN",     "FOR",     "FRE(",   "GET",     "GOSUB",   "GOTO",   "HELP",    "HEX$(",     "IF",      "IMP",
    "INKEY$", "INP(",    "INPUT",  "INPUT$(", "INSTR(",  "INT(",   "KEY",     "LEFT$(",    "LEN(",    "LET",
    "LINE",   "LIST",    "LOAD",   "LOCATE",  "LOG(",    "MERGE",  "MID$(",   "MOD",       "MOTOR",   "NEW",
    "NEXT",   "NOT",     "OCT$(",  "OFF",     "ON",      "OPTION", "OR",      "PAINT",     "PCG",     "PEEK(",
    "PLAY",   "POINT(",  "POS(",   "PRESET",  "PRINT",   "PSET",   "PUT",     "RANDOMIZE", "READ",    "REM",
    "RENUM",  "RESTORE", "RESUME", "RETURN",  "RIGHT$(", "RND(",   "RUN",     "SAVE",      "SGN(",    "SIN(",
    "SOUND",  "SPACE$(", "SPC(",   "SQR(",    "STEP",    "STOP",   "STR$(",   "STRING$(",  "SWAP",    "TAB(",
    "TAN(",   "THEN",    "TIME$",  "TO",      "TROFF",   "TRON",   "USING",   "VAL(",      "VARPTR(", "WEND",
    "WHILE",  "WIDTH",   "XOR",    "?",       "'"};
const std::vector<std::string> marks = {"(", ")", "+",  "-", "*", "/", "\\", "^",  "=", "<", ">", "<>", ",",
                                        ";", ":", "\"", "#", "$", "%", "@",  "&H", "&", ".", "!", " "};
const std::vector<std::string> names = {"A",  "B",   "I",  "J",   "A$",       "B$",
                                        "A(", "B$(", "C%", "I%(", "LONGNAME", "LONGNAMES$"};
const std::vector<std::string> numbers = {"0",    "1",     "2",    "3",     "10",     "-1",
                                          "255",  "256",   "1000", "32767", "32768",  "65535",
                                          "1E38", "1E-38", ".5",   "1.5E3", "&HFFFF", "99999999999"};
// Lines that are right, to be run as they are and damaged.
const std::vector<std::string> right = {"10 FOR I=1 TO 10:PRINT I;:NEXT I",
                                        "20 A$=A$+CHR$(65+I):IF LEN(A$)<250 THEN 20 ELSE PRINT A$",
                                        "30 DIM A(10,5),B$(20):A(3,2)=7:B$(5)=\"X\"+STR$(A(3,2))",
                                        "40 GOSUB 100:ON I GOTO 10,20,30",
                                        "100 READ A,B$:DATA 1,\"TWO\",3,FOUR:RETURN",
                                        "50 DEF FNA(X)=X*X+A:PRINT FNA(3)",
                                        "60 WHILE I>0:I=I-1:WEND",
                                        "70 ON ERROR GOTO 90:ERROR 5",
                                        "90 RESUME NEXT",
                                        "80 PRINT USING \"##.##^^^^ & !\";A,A$,B$",
                                        "LINE (0,0)-(639,199),7,BF:CIRCLE (320,100),90,2:PAINT (320,100),4,2",
                                        "PSET (10,10),3:PRINT POINT(10,10)",
                                        "INPUT \"WHAT\";A,B$",
                                        "LINE INPUT A$:PRINT MID$(A$,2,3);INSTR(A$,\"A\")",
                                        "LOCATE 10,5:COLOR 3:PRINT TAB(20);SPC(3);HEX$(A);OCT$(9)",
                                        "CONSOLE 0,24,1,1:WIDTH 40,20:CLS:KEY 1,\"LIST\"+CHR$(13)",
                                        "PLAY \"O4CDE\",\"L8GAB\":SOUND 1,100:BEEP",
                                        "RUN",
                                        "LIST",
                                        "NEW",
                                        "CONT",
                                        "RENUM",
                                        "DELETE 10-30",
                                        "CSAVE \"X\"",
                                        "CLOAD",
                                        "CLOAD?",
                                        "MERGE",
                                        "EDIT 20",
                                        "CLEAR 100",
                                        "SWAP A,B:ERASE A:DIM A(3)",
                                        "RANDOMIZE 5:PRINT RND(1);SQR(2);SIN(1);2^.5;VAL(\"1E5\")",
                                        "GET@(3,3)-(20,9),A:PUT@(100,50),A,XOR:PUT@(0,0),I%(1),PSET",
                                        "GET@(0,0)-(9,9),A(2):PUT@(A,B),A(1),AND",
                                        "ON KEY GOSUB 10,,30:KEY(1) ON:KEY(2) STOP:KEY(1) OFF",
                                        "PRINT FRE(0);FRE(A$);TIME$;DATE$"};

class line_maker {
  public:
    explicit line_maker(unsigned seed) : random(seed) {}
    size_t below(size_t n) { return random() % n; }

    std::string line() {
        std::string text;
        if (below(12) == 0) return below(3) == 0 ? "GOTO 10" : "RUN";
        switch (below(8)) {
        case 0: text = noise(); break;
        case 1:
        case 2: text = right[below(right.size())]; break;
        case 3: text = damaged(right[below(right.size())]); break;
        default: text = sentence(); break;
        }
        if (below(4) == 0) text = std::to_string(below(8) == 0 ? below(70000) : below(20) * 10) + " " + text;
        // Spelled by chance, these would reach past the interpreter as well.
        for (const char *word : {"POKE", "OUT", "USR", "MON", "BLOAD", "DEMO", "WAIT"}) blot(text, word);
        text.resize(std::min<size_t>(text.size(), 255));
        return text;
    }

    std::string tape() {
        std::string bytes(24, '\xFF');
        bytes += "\x01PROGRAM\r";
        unsigned sum = 0;
        std::string body;
        for (size_t i = below(12); i > 0; --i) body += std::to_string(i * 10) + " " + sentence() + "\r";
        for (const char *word : {"POKE", "OUT", "USR", "MON", "BLOAD", "DEMO", "WAIT"}) blot(body, word);
        body += '\x1A';
        for (const char c : body) sum += static_cast<uint8_t>(c);
        bytes += body + static_cast<char>(-static_cast<int>(sum));
        if (below(3) == 0) bytes = body;
        for (size_t i = below(6); i > 0; --i) {
            const size_t at = below(bytes.size());
            if (below(4) == 0)
                bytes.erase(at, below(20));
            else
                bytes[at] = static_cast<char>(random());
            if (bytes.empty()) bytes = "\x1A";
        }
        std::replace(bytes.begin(), bytes.end(), ':', ';'); // records load machine code anywhere
        std::replace(bytes.begin(), bytes.end(), '\x02', '\x03');
        return bytes;
    }

  private:
    static void blot(std::string &text, const char *word) {
        const size_t length = std::strlen(word);
        for (size_t at = 0; at + length <= text.size(); ++at)
            if (std::equal(word, word + length, text.begin() + static_cast<std::ptrdiff_t>(at),
                           [](char a, char b) { return a == std::toupper(static_cast<unsigned char>(b)); }))
                text[at] = 'Q';
    }
    std::string noise() {
        std::string text(below(255), ' ');
        for (char &c : text) c = static_cast<char>(below(4) == 0 ? 1 + below(255) : 32 + below(95));
        return text;
    }
    std::string sentence() {
        std::string text;
        for (size_t i = 1 + below(12); i > 0; --i) {
            switch (below(5)) {
            case 0: text += numbers[below(numbers.size())]; break;
            case 1: text += names[below(names.size())]; break;
            case 2: text += marks[below(marks.size())]; break;
            case 3: text += words[below(words.size())]; break;
            default: text += ' ' + words[below(words.size())] + ' '; break;
            }
        }
        return text;
    }
    std::string damaged(std::string text) {
        for (size_t i = 1 + below(3); i > 0; --i) {
            const size_t at = below(text.size());
            switch (below(4)) {
            case 0: text.erase(at, 1 + below(3)); break;
            case 1: text.insert(at, marks[below(marks.size())]); break;
            case 2: text.insert(at, numbers[below(numbers.size())]); break;
            default: text[at] = static_cast<char>(32 + below(95)); break;
            }
            if (text.empty()) text = "?";
        }
        return text;
    }

    std::mt19937 random;
};

} // namespace

basic_fuzz_result fuzz_basic(uint64_t lines, unsigned seed) {
    auto machine_watched = std::make_unique<watched_machine>();
    line_maker maker(seed);
    for (uint64_t i = 0; i < lines; ++i) {
        if (maker.below(20) == 0) machine_watched->tape(maker.tape());
        machine_watched->line(maker.line());
    }
    return machine_watched->result;
}

basic_fuzz_result replay_basic(const std::vector<std::string> &lines) {
    auto machine_watched = std::make_unique<watched_machine>();
    for (const std::string &line : lines) machine_watched->line(line);
    return machine_watched->result;
}
