#include "debug/expression.h"

#include "api/kiv.h"
#include "debug/debug_error.h"
#include "machine/kiv_machine.h"
#include <cctype>
#include <cstring>

expression_context looked_at;

namespace {

std::string upper(std::string text) {
    for (char &c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// ---- names -------------------------------------------------------------------------------------------

struct word_name {
    const char *name;
    int index;
};
constexpr word_name words[] = {
    {"BC", KIV_REG_BC},      {"DE", KIV_REG_DE},      {"HL", KIV_REG_HL},      {"AF", KIV_REG_AF},
    {"BC'", KIV_REG_BC_ALT}, {"DE'", KIV_REG_DE_ALT}, {"HL'", KIV_REG_HL_ALT}, {"AF'", KIV_REG_AF_ALT},
    {"IX", KIV_REG_IX},      {"IY", KIV_REG_IY},      {"PC", KIV_REG_PC},      {"SP", KIV_REG_SP},
    {"I", KIV_REG_I},        {"R", KIV_REG_R},        {"IM", KIV_REG_IM},      {"IFF1", KIV_REG_IFF1},
    {"IFF2", KIV_REG_IFF2},
};

struct half_name {
    const char *name;
    int index, shift;
};
constexpr half_name halves[] = {
    {"A", KIV_REG_AF, 8},   {"F", KIV_REG_AF, 0},   {"B", KIV_REG_BC, 8},   {"C", KIV_REG_BC, 0},
    {"D", KIV_REG_DE, 8},   {"E", KIV_REG_DE, 0},   {"H", KIV_REG_HL, 8},   {"L", KIV_REG_HL, 0},
    {"IXH", KIV_REG_IX, 8}, {"IXL", KIV_REG_IX, 0}, {"IYH", KIV_REG_IY, 8}, {"IYL", KIV_REG_IY, 0},
};

struct flag_name {
    const char *name;
    uint32_t bit;
};
constexpr flag_name flags[] = {{"F.S", flag_s},  {"F.Z", flag_z}, {"F.H", flag_h},
                               {"F.P", flag_pv}, {"F.N", flag_n}, {"F.C", flag_c}};

struct area_name {
    const char *name;
    int32_t area;
};
constexpr area_name areas[] = {
    {"main", KIV_AREA_MAIN_ROM}, {"nbasic", KIV_AREA_NBASIC_ROM}, {"ext", KIV_AREA_EXT_ROM},
    {"ram", KIV_AREA_RAM},       {"blue", KIV_AREA_BLUE},         {"red", KIV_AREA_RED},
    {"green", KIV_AREA_GREEN},   {"font", KIV_AREA_FONT},         {"pcg", KIV_AREA_PCG}};

expression register_named(const std::string &name) {
    for (const word_name &w : words)
        if (name == w.name) return [i = w.index] { return int64_t{kiv_get_register(i)}; };
    for (const half_name &h : halves)
        if (name == h.name) return [h] { return int64_t{kiv_get_register(h.index) >> h.shift & 0xFF}; };
    for (const flag_name &f : flags)
        if (name == f.name) return [b = f.bit] { return int64_t{(kiv_get_register(KIV_REG_AF) & b) != 0}; };
    return nullptr;
}

expression run_value(const std::string &name) {
    if (name == "frame") return [] { return static_cast<int64_t>(kiv_frames()); };
    if (name == "line") return [] { return int64_t{machine.raster_line}; };
    if (name == "tstates") return [] { return static_cast<int64_t>(kiv_t_states()); };
    if (name == "address") return [] { return looked_at.address; };
    if (name == "value") return [] { return looked_at.value; };
    if (name == "hits") return [] { return looked_at.hits; };
    return nullptr;
}

int64_t peek(int32_t area, int64_t address) {
    const int32_t byte = kiv_peek(area, static_cast<uint32_t>(address) & 0xFFFF);
    return byte < 0 ? 0xFF : byte;
}

// What stands in brackets behind the name; null when the name is none that takes them.
expression memory_named(const std::string &name, const expression &at) {
    if (name.empty()) return [at] { return peek(KIV_AREA_CPU, at()); };
    if (name == "w")
        return [at] {
            const int64_t address = at();
            return peek(KIV_AREA_CPU, address) | peek(KIV_AREA_CPU, address + 1) << 8;
        };
    if (name == "port") return [at] { return int64_t{kiv_port_peek(static_cast<uint16_t>(at()))}; };
    for (const area_name &a : areas)
        if (name == a.name) return [at, area = a.area] { return peek(area, at()); };
    return nullptr;
}

// ---- operators ---------------------------------------------------------------------------------------

using operation = int64_t (*)(int64_t, int64_t);

int64_t shift_left(int64_t a, int64_t b) {
    return b < 0 || b > 62 ? 0 : static_cast<int64_t>(static_cast<uint64_t>(a) << b);
}
int64_t shift_right(int64_t a, int64_t b) { return b < 0 || b > 62 ? 0 : a >> b; }
int64_t wrapped(uint64_t value) { return static_cast<int64_t>(value); }

struct binary {
    const char *text;
    int strength; // the stronger binds first
    operation apply;
};
// Longer ones first.
constexpr binary operators[] = {
    {"||", 1, [](int64_t a, int64_t b) -> int64_t { return a != 0 || b != 0; }},
    {"&&", 2, [](int64_t a, int64_t b) -> int64_t { return a != 0 && b != 0; }},
    {"==", 6, [](int64_t a, int64_t b) -> int64_t { return a == b; }},
    {"!=", 6, [](int64_t a, int64_t b) -> int64_t { return a != b; }},
    {"<<", 8, shift_left},
    {">>", 8, shift_right},
    {"<=", 7, [](int64_t a, int64_t b) -> int64_t { return a <= b; }},
    {">=", 7, [](int64_t a, int64_t b) -> int64_t { return a >= b; }},
    {"<", 7, [](int64_t a, int64_t b) -> int64_t { return a < b; }},
    {">", 7, [](int64_t a, int64_t b) -> int64_t { return a > b; }},
    {"|", 3, [](int64_t a, int64_t b) { return a | b; }},
    {"^", 4, [](int64_t a, int64_t b) { return a ^ b; }},
    {"&", 5, [](int64_t a, int64_t b) { return a & b; }},
    {"+", 9,
     [](int64_t a, int64_t b) { return wrapped(static_cast<uint64_t>(a) + static_cast<uint64_t>(b)); }},
    {"-", 9,
     [](int64_t a, int64_t b) { return wrapped(static_cast<uint64_t>(a) - static_cast<uint64_t>(b)); }},
    {"*", 10,
     [](int64_t a, int64_t b) { return wrapped(static_cast<uint64_t>(a) * static_cast<uint64_t>(b)); }},
    // A division by zero is 0: a condition is looked at a million times a second, and must not end the run.
    {"/", 10,
     [](int64_t a, int64_t b) {
         return b == 0 ? 0 : b == -1 ? wrapped(0 - static_cast<uint64_t>(a)) : a / b;
     }},
    {"%", 10, [](int64_t a, int64_t b) { return b == 0 || b == -1 ? 0 : a % b; }},
};

constexpr int deepest = 200; // parentheses and signs

class parser {
  public:
    parser(const std::string &source, const symbol_table &table, bool no_machine)
        : text(source), symbols(table), constant(no_machine) {}

    expression whole() {
        expression e = chain(0);
        skip_blanks();
        if (at < text.size()) fail("'" + text.substr(at) + "' is not understood");
        return e;
    }

  private:
    [[noreturn]] void fail(const std::string &why) const {
        throw debug_error("expression \"" + text + "\": " + why);
    }
    void skip_blanks() {
        while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) ++at;
    }
    bool take(char c) {
        skip_blanks();
        if (at >= text.size() || text[at] != c) return false;
        ++at;
        return true;
    }
    void want(char c) {
        if (!take(c)) fail(std::string("'") + c + "' is missing");
    }

    const binary *operator_here() {
        skip_blanks();
        for (const binary &b : operators)
            if (text.compare(at, std::strlen(b.text), b.text) == 0) return &b;
        return nullptr;
    }

    // Operators stronger than `limit`, from left to right.
    expression chain(int limit) {
        expression left = unary();
        for (const binary *b = operator_here(); b != nullptr && b->strength > limit; b = operator_here()) {
            at += std::strlen(b->text);
            // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the function owns both
            left = [left, right = chain(b->strength), apply = b->apply] { return apply(left(), right()); };
        }
        return left;
    }

    expression unary() {
        if (++depth > deepest) fail("it is nested too deep");
        expression e = unary_here();
        --depth;
        return e;
    }

    expression unary_here() {
        if (take('-')) return [e = unary()] { return wrapped(0 - static_cast<uint64_t>(e())); };
        if (take('+')) return unary();
        if (take('~')) return [e = unary()] { return ~e(); };
        if (take('!')) return [e = unary()] { return int64_t{e() == 0}; };
        if (take('(')) {
            expression e = chain(0);
            want(')');
            return e;
        }
        if (!constant && take('[')) return in_brackets("");
        if (take('\'')) return character();
        return number_or_name();
    }

    expression in_brackets(const std::string &name) {
        const expression address = chain(0);
        want(']');
        expression e = memory_named(name, address);
        if (!e) fail(name + " has no brackets");
        return e;
    }

    expression character() {
        if (at + 1 >= text.size() || text[at + 1] != '\'') fail("a character such as 'A' is wanted");
        at += 2;
        return [c = static_cast<uint8_t>(text[at - 2])] { return int64_t{c}; };
    }

    std::string word() {
        skip_blanks();
        const size_t start = at;
        if (at < text.size() && (text[at] == '$' || text[at] == '#' || text[at] == '%')) ++at;
        while (at < text.size() && (std::isalnum(static_cast<unsigned char>(text[at])) ||
                                    std::string_view("_.@?'").find(text[at]) != std::string_view::npos))
            ++at;
        return text.substr(start, at - start);
    }

    expression number_or_name() {
        const std::string name = word();
        if (name.empty())
            fail(at < text.size() ? "'" + text.substr(at) + "' is not understood" : "it ends too early");
        if (const auto number = parse_number(name)) return [n = int64_t{*number}] { return n; };
        if (!constant && take('[')) return in_brackets(name);
        expression reg = register_named(upper(name));
        if (reg && !constant) return reg;
        if (const auto value = symbols.find(name); value && !reg) return [v = int64_t{*value}] { return v; };
        if (expression e = run_value(name); e && !constant) return e;
        fail("no register, symbol or number " + name);
    }

    const std::string &text;
    const symbol_table &symbols;
    bool constant;
    size_t at = 0;
    int depth = 0;
};

} // namespace

expression parse_expression(const std::string &text, const symbol_table &symbols) {
    return parser(text, symbols, false).whole();
}

int64_t parse_constant(const std::string &text, const symbol_table &symbols) {
    return parser(text, symbols, true).whole()();
}
