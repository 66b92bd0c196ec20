#include "debug/instruction_set.h"

namespace {

using kind = instruction_kind;

const char *const registers[] = {"B", "C", "D", "E", "H", "L", "(HL)", "A"};
const char *const pairs[] = {"BC", "DE", "HL", "SP"};
const char *const conditions[] = {"NZ", "Z", "NC", "C", "PO", "PE", "P", "M"};
const char *const arithmetic[] = {"ADD A,", "ADC A,", "SUB ", "SBC A,", "AND ", "XOR ", "OR ", "CP "};
const char *const rotations[] = {"RLC", "RRC", "RL", "RR", "SLA", "SRA", "SLL", "SRL"};
const char *const bits[] = {"", "BIT", "RES", "SET"};

// An opcode taken apart as the decoder of the chip does: xxyyyzzz, and yyy as ppq.
struct fields {
    explicit fields(int opcode)
        : x(opcode >> 6), y(opcode >> 3 & 7), z(opcode & 7), p(y >> 1), q((y & 1) != 0) {}
    int x, y, z, p;
    bool q;
    std::string y_text() const { return std::to_string(y); }
};

std::string low_quarter(const fields &f) {
    static const char *const jumps[] = {"NOP",     "EX AF,AF'", "DJNZ e",  "JR e",
                                        "JR NZ,e", "JR Z,e",    "JR NC,e", "JR C,e"};
    static const char *const loads[] = {"LD (BC),A",  "LD A,(BC)",  "LD (DE),A", "LD A,(DE)",
                                        "LD (nn),HL", "LD HL,(nn)", "LD (nn),A", "LD A,(nn)"};
    static const char *const singles[] = {"RLCA", "RRCA", "RLA", "RRA", "DAA", "CPL", "SCF", "CCF"};
    const std::string pair = pairs[f.p], byte = registers[f.y];
    switch (f.z) {
    case 0: return jumps[f.y];
    case 1: return f.q ? "ADD HL," + pair : "LD " + pair + ",nn";
    case 2: return loads[f.y];
    case 3: return (f.q ? "DEC " : "INC ") + pair;
    case 4: return "INC " + byte;
    case 5: return "DEC " + byte;
    case 6: return "LD " + byte + ",n";
    default: return singles[f.y];
    }
}

std::string restart(int y) {
    static const char *const targets[] = {"$00", "$08", "$10", "$18", "$20", "$28", "$30", "$38"};
    return std::string("RST ") + targets[y];
}

std::string high_quarter(const fields &f) {
    static const char *const odd[] = {"RET", "EXX", "JP (HL)", "LD SP,HL"};
    static const char *const singles[] = {"JP nn",      "",         "OUT (n),A", "IN A,(n)",
                                          "EX (SP),HL", "EX DE,HL", "DI",        "EI"};
    const std::string pair = f.p == 3 ? "AF" : pairs[f.p], condition = conditions[f.y];
    switch (f.z) {
    case 0: return "RET " + condition;
    case 1: return f.q ? odd[f.p] : "POP " + pair;
    case 2: return "JP " + condition + ",nn";
    case 3: return singles[f.y];
    case 4: return "CALL " + condition + ",nn";
    case 5: return !f.q ? "PUSH " + pair : f.p == 0 ? "CALL nn" : "";
    case 6: return std::string(arithmetic[f.y]) + "n";
    default: return restart(f.y);
    }
}

std::string plain(int opcode) {
    const fields f(opcode);
    switch (f.x) {
    case 0: return low_quarter(f);
    case 1: return opcode == 0x76 ? "HALT" : std::string("LD ") + registers[f.y] + "," + registers[f.z];
    case 2: return std::string(arithmetic[f.y]) + registers[f.z];
    default: return high_quarter(f);
    }
}

instruction_form cb(int opcode) {
    const fields f(opcode);
    if (f.x != 0) return {std::string(bits[f.x]) + " " + f.y_text() + "," + registers[f.z], kind::documented};
    return {std::string(rotations[f.y]) + " " + registers[f.z],
            f.y == 6 ? kind::undocumented : kind::documented};
}

instruction_form ed_block(const fields &f) {
    static const char *const names[] = {"LD", "CP", "IN", "OT"}, *const ends[] = {"I", "D", "IR", "DR"};
    if (f.y < 4 || f.z > 3) return {};
    std::string name = std::string(names[f.z]) + ends[f.y - 4];
    if (f.z == 3 && f.y < 6) name = f.y == 4 ? "OUTI" : "OUTD";
    return {name, f.z < 2 ? kind::documented : kind::unimplemented};
}

std::string ed_single(int opcode) {
    switch (opcode) {
    case 0x44: return "NEG";
    case 0x45: return "RETN";
    case 0x46: return "IM 0";
    case 0x47: return "LD I,A";
    case 0x4D: return "RETI";
    case 0x4F: return "LD R,A";
    case 0x56: return "IM 1";
    case 0x57: return "LD A,I";
    case 0x5E: return "IM 2";
    case 0x5F: return "LD A,R";
    case 0x67: return "RRD";
    case 0x6F: return "RLD";
    default: return "";
    }
}

// The mirrors of NEG, RETN and IM are undefined here, and so are IN (C) and OUT (C),0.
instruction_form ed(int opcode) {
    const fields f(opcode);
    if (f.x == 2) return ed_block(f);
    if (f.x != 1) return {};
    const std::string pair = pairs[f.p], byte = registers[f.y];
    const kind word = f.p == 2 ? kind::another_form : kind::documented; // HL has a shorter one
    switch (f.z) {
    case 0: return f.y == 6 ? instruction_form{} : instruction_form{"IN " + byte + ",(C)", kind::documented};
    case 1: return f.y == 6 ? instruction_form{} : instruction_form{"OUT (C)," + byte, kind::documented};
    case 2: return {(f.q ? "ADC HL," : "SBC HL,") + pair, kind::documented};
    case 3: return {f.q ? "LD " + pair + ",(nn)" : "LD (nn)," + pair, word};
    default: break;
    }
    const std::string single = ed_single(opcode);
    return single.empty() ? instruction_form{} : instruction_form{single, kind::documented};
}

bool replace(std::string &text, const std::string &from, const std::string &to) {
    const size_t at = text.find(from);
    if (at == std::string::npos) return false;
    text.replace(at, from.size(), to);
    return true;
}

// H or L where it stands as an operand.
bool replace_half(std::string &text, char half, const std::string &to) {
    bool done = false;
    const size_t operands = text.find(' ');
    if (operands == std::string::npos) return false;
    for (size_t i = text.size(); i-- > operands + 1;) {
        const bool alone =
            (i + 1 == text.size() || text[i + 1] == ',') && (text[i - 1] == ' ' || text[i - 1] == ',');
        if (text[i] != half || !alone) continue;
        text.replace(i, 1, to);
        done = true;
    }
    return done;
}

// What concerns HL, with the index register in its place; everything else is undefined behind the prefix.
instruction_form indexed(int opcode, const std::string &index) {
    std::string text = plain(opcode);
    if (text == "EX DE,HL") return {};
    if (text == "JP (HL)") return {"JP (" + index + ")", kind::documented};
    if (replace(text, "(HL)", "(" + index + "+d)")) return {text, kind::documented};
    if (replace(text, "HL", index)) {
        replace(text, "HL", index); // ADD HL,HL
        return {text, kind::documented};
    }
    const bool high = replace_half(text, 'H', index + "H"), low = replace_half(text, 'L', index + "L");
    return high || low ? instruction_form{text, kind::undocumented} : instruction_form{};
}

// BIT, RES and SET do not care what register their byte names; rotations leave a copy there.
instruction_form indexed_cb(int opcode, const std::string &index) {
    const fields f(opcode);
    const std::string place = "(" + index + "+d)";
    if (f.x != 0)
        return {std::string(bits[f.x]) + " " + f.y_text() + "," + place,
                f.z == 6 ? kind::documented : kind::another_form};
    const std::string text = std::string(rotations[f.y]) + " " + place;
    if (f.z != 6) return {text + "," + registers[f.z], kind::undocumented};
    return {text, f.y == 6 ? kind::undocumented : kind::documented};
}

instruction_form plain_form(int opcode) {
    const std::string text = plain(opcode);
    return text.empty() ? instruction_form{} : instruction_form{text, kind::documented};
}

std::array<instruction_page, opcode_pages> make() {
    std::array<instruction_page, opcode_pages> set;
    const auto fill = [&](opcode_page page, auto form) {
        for (int opcode = 0; opcode < 256; ++opcode)
            set[static_cast<size_t>(page)][static_cast<size_t>(opcode)] = form(opcode);
    };
    fill(opcode_page::plain, plain_form);
    fill(opcode_page::cb, cb);
    fill(opcode_page::ed, ed);
    fill(opcode_page::dd, [](int opcode) { return indexed(opcode, "IX"); });
    fill(opcode_page::fd, [](int opcode) { return indexed(opcode, "IY"); });
    fill(opcode_page::ddcb, [](int opcode) { return indexed_cb(opcode, "IX"); });
    fill(opcode_page::fdcb, [](int opcode) { return indexed_cb(opcode, "IY"); });
    return set;
}

} // namespace

const std::array<instruction_page, opcode_pages> &instruction_set() {
    static const std::array<instruction_page, opcode_pages> set = make();
    return set;
}

std::string page_prefix(opcode_page page) {
    static const char *const prefixes[] = {"", "\xCB", "\xED", "\xDD", "\xFD", "\xDD\xCB", "\xFD\xCB"};
    return prefixes[static_cast<size_t>(page)];
}
