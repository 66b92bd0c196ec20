// Numbers of BASIC in the assembled ROM against the host's long double. KIV_NUMBER_POINTS sets how many
// points each test takes.
#include "rom_routines.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr int err_call = 5, err_overflow = 6, err_zero = 11;

struct Numbers : testing::Test {
    static int points() {
        const char *set = std::getenv("KIV_NUMBER_POINTS");
        return set != nullptr ? std::atoi(set) : 10000;
    }
    rom_routines rom;
    operands operand;
    uint8_t *left = rom_routines::memory + rom_routines::left;
};

TEST_F(Numbers, ArithmeticIsRightToTheNearest) {
    const struct {
        const char *name;
        real (*host)(real, real);
    } operations[] = {{"float_add", [](real a, real b) { return a + b; }},
                      {"float_sub", [](real a, real b) { return a - b; }},
                      {"float_mul", [](real a, real b) { return a * b; }},
                      {"float_div", [](real a, real b) {
                           return b != 0 ? a / b : a * std::numeric_limits<real>::infinity();
                       }}};
    const real largest = std::ldexp(1 - std::ldexp(1.0L, -32), 127), smallest = std::ldexp(1.0L, -128);
    for (const auto &operation : operations)
        for (int i = 0; i < points() && !HasFailure(); ++i) {
            const int far = i % 4 == 0 ? 127 : 40;
            operand(left, far);
            operand(rom.fac(), far);
            const bool integers = left[0] == 0 && rom.fac()[0] == 0;
            const real a = rom.value(left), b = rom.result(), want = operation.host(a, b);
            const int error = rom.call(operation.name);
            SCOPED_TRACE(testing::Message() << operation.name << ' ' << a << ", " << b);
            if (operation.name == std::string("float_div") && b == 0) {
                EXPECT_EQ(error, err_zero);
            } else if (std::fabs(want) > largest * 1.0000001L) {
                EXPECT_EQ(error, err_overflow);
            } else if (std::fabs(want) < smallest * 0.9999999L) {
                EXPECT_EQ(rom.result(), 0);
            } else if (std::fabs(want) < largest && std::fabs(want) > smallest) {
                EXPECT_EQ(error, 0);
                EXPECT_LE(std::fabs(rom.result() - want), 0.53L * last_bit(want)) << rom.result();
                if (integers && want == std::rint(want) && std::fabs(want) < 32768) {
                    EXPECT_EQ(rom.fac()[0], 0) << "no integer";
                }
            }
        }
}

TEST_F(Numbers, OneOperand) {
    const struct {
        const char *name;
        real (*host)(real);
    } functions[] = {{"float_negate", [](real a) { return -a; }},
                     {"float_abs", [](real a) { return std::fabs(a); }},
                     {"float_int", [](real a) { return std::floor(a); }},
                     {"float_fix", [](real a) { return std::trunc(a); }},
                     {"float_sgn", [](real a) { return static_cast<real>((a > 0) - (a < 0)); }}};
    for (int i = 0; i < points() && !HasFailure(); ++i) {
        operand(left, 45);
        const real a = rom.value(left);
        SCOPED_TRACE(a);
        for (const auto &f : functions) {
            std::memcpy(rom.fac(), left, 5);
            EXPECT_EQ(rom.call(f.name), 0) << f.name;
            EXPECT_EQ(rom.result(), f.host(a)) << f.name;
        }
        const real rounded = std::trunc(a + std::copysign(0.5L, a));
        std::memcpy(rom.fac(), left, 5);
        if (rounded < -32768 || rounded > 32767) {
            EXPECT_EQ(rom.call("float_to_integer"), err_overflow);
        } else {
            EXPECT_EQ(rom.call("float_to_integer"), 0);
            EXPECT_EQ(static_cast<int16_t>(rom.cpu.HL), rounded);
        }
        operand(rom.fac(), 45);
        if (i % 8 == 0) std::memcpy(rom.fac(), left, 5);
        const real b = rom.result();
        rom.call("float_compare");
        EXPECT_EQ(bool(rom.cpu.AF & flag_z), a == b) << b;
        EXPECT_EQ(rom.carry(), a < b) << b;
    }
}

// What PRINT shows of v: nine digits, ties away from zero.
std::string printed(real v) {
    if (v == 0) return " 0";
    char all[160]; // every digit there is
    std::snprintf(all, sizeof all, "%.130Le", std::fabs(v));
    std::string digits = all[0] + std::string(all + 2, 130);
    int power = std::atoi(std::strchr(all, 'e') + 1);
    const bool up = digits[9] >= '5';
    digits.resize(9);
    for (int i = 8; up && ++digits[i] > '9'; --i) {
        digits[i] = '0';
        if (i == 0) {
            digits = "100000000";
            ++power;
            break;
        }
    }
    digits.resize(digits.find_last_not_of('0') + 1);
    const int count = static_cast<int>(digits.size());
    std::string text = v < 0 ? "-" : " ";
    if (power >= 0 && power < 9) {
        if (count <= power) return text + digits + std::string(power + 1 - count, '0');
        return text + digits.substr(0, power + 1) + (count > power + 1 ? "." : "") + digits.substr(power + 1);
    }
    if (power < 0 && power >= -4 && (power >= -2 || count - power - 1 <= 9))
        return text + "." + std::string(-power - 1, '0') + digits;
    char exponent[8];
    std::snprintf(exponent, sizeof exponent, "E%+03d", power);
    return text + digits[0] + (count > 1 ? "." : "") + digits.substr(1) + exponent;
}

TEST_F(Numbers, PrintedNumbersAreRightAndReadBack) {
    for (int i = 0; i < points() && !HasFailure(); ++i) {
        if (i % 3 == 0)
            rom.put(rom.fac(), operand.below(1000000) / (i % 2 ? 100.0L : 1000.0L));
        else
            operand(rom.fac(), i % 3 == 1 ? 20 : 120);
        const std::string want = printed(rom.result());
        ASSERT_EQ(rom.call("number_print"), 0);
        EXPECT_EQ(rom.text_at_hl(), want);
        rom.put_text(rom.text, want);
        ASSERT_EQ(rom.call("number_parse", rom.text), 0) << want;
        EXPECT_EQ(rom.result(), rom.nearest(std::strtold(want.c_str(), nullptr))) << want;
        EXPECT_EQ(rom.cpu.HL, rom.text + want.size()) << want;
    }
}

TEST_F(Numbers, ReadAsFarAsTheyGo) {
    const struct {
        const char *text;
        real value;
        int length; // 0: no number there
    } rows[] = {{"12", 12, 2},
                {" -5 ", -5, 3},
                {"+.5", .5L, 3},
                {"1ELSE", 1, 1},
                {"1E+", 1, 1},
                {"1E5", 100000, 3},
                {"2d-3X", .002L, 4},
                {"&HFF", 255, 4},
                {"&hffff", -1, 6},
                {"&O17", 15, 4},
                {"&17", 15, 3},
                {"&HG", 0, 2},
                {"-&H10", -16, 5},
                {"&8", 0, 0},
                {"ABC", 0, 0},
                {".", 0, 0},
                {"-", 0, 0},
                {"1.2.3", 1.2L, 3},
                {"32768", 32768, 5},
                {"-32768", -32768, 6},
                {"5%", 5, 2},
                {"5!", 5, 2},
                {"5#", 5, 2},
                {"1E-50", 0, 5},
                {"0E99", 0, 4},
                {"00000000000000000012", 12, 20},
                {"4194303999", 4194303999.0L, 10},
                {"1 2", 1, 1},
                {"0.000000000000000000000000000000000000000000001E45", 1, 50},
                {"65535.5", 65535.5L, 7}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        rom.put_text(rom.text, row.text);
        EXPECT_EQ(rom.call("number_parse", rom.text), 0);
        EXPECT_EQ(rom.result(), rom.nearest(row.value));
        EXPECT_EQ(rom.carry(), row.length == 0);
        EXPECT_EQ(rom.cpu.HL - rom.text, row.length);
    }
    for (const char *text : {"1E39", "2E38", "&H12345", "&O777777", "1E200"}) {
        rom.put_text(rom.text, text);
        EXPECT_EQ(rom.call("number_parse", rom.text), err_overflow) << text;
    }
}

TEST_F(Numbers, LongOnesAreRightToTheNearest) {
    for (int i = 0; i < points() && !HasFailure(); ++i) {
        std::string text;
        for (int digits = 10 + operand.below(15); digits > 0; --digits)
            text += static_cast<char>('0' + operand.below(10));
        text.insert(static_cast<size_t>(operand.below(static_cast<int>(text.size()))), ".");
        if (i % 2 == 0) text += "E" + std::to_string(operand.below(40) - 30);
        const real want = std::strtold(text.c_str(), nullptr);
        if (want > 1e38L || want < 1e-38L) continue;
        rom.put_text(rom.text, text);
        ASSERT_EQ(rom.call("number_parse", rom.text), 0) << text;
        EXPECT_LE(std::fabs(rom.result() - want), 0.51L * last_bit(want)) << text;
        EXPECT_EQ(rom.cpu.HL, rom.text + text.size()) << text;
    }
}

TEST_F(Numbers, FunctionsAreWithin2ToTheMinus29) {
    const struct {
        const char *name;
        real (*host)(real);
        real from, to;
        bool relative;
        real most;
    } rows[] = {{"float_sin", std::sin, -256, 256, false, 0x1p-29L},
                {"float_sin", std::sin, 0x1p-30L, 0.7L, true, 0x1p-29L},
                {"float_cos", std::cos, -256, 256, false, 0x1p-29L},
                {"float_tan", std::tan, -1.5L, 1.5L, true, 0x1p-29L},
                {"float_atn", std::atan, -4, 4, true, 0x1p-29L},
                {"float_atn", std::atan, -1e6L, 1e6L, true, 0x1p-29L},
                {"float_exp", std::exp, -88, 88, true, 0x1p-29L},
                {"float_exp", std::exp, -1, 1, true, 0x1p-29L},
                {"float_log", std::log, 0x1p-20L, 4, true, 0x1p-29L},
                {"float_log", std::log, 1, 1e30L, true, 0x1p-29L},
                {"float_sqr", std::sqrt, 0, 2, true, 0x1p-31L},
                {"float_sqr", std::sqrt, 0, 1e30L, true, 0x1p-31L}};
    std::uniform_real_distribution<double> part(0, 1);
    for (const auto &row : rows)
        for (int i = 0; i < points() / 4 && !HasFailure(); ++i) {
            const real x = row.from + part(operand.next) * (row.to - row.from);
            rom.put(rom.fac(), i % 8 == 0 && row.to > 3 ? std::rint(x) : x);
            const real argument = rom.result(), want = row.host(argument);
            if (want == 0 || !std::isfinite(want)) continue;
            EXPECT_EQ(rom.call(row.name), 0);
            EXPECT_LE(std::fabs(rom.result() - want) / (row.relative ? std::fabs(want) : 1), row.most)
                << row.name << ' ' << argument;
        }
    for (int root = 0; root < 65536; root += 7) { // squares have their roots
        rom.put(rom.fac(), static_cast<real>(root) * root);
        const bool integer = rom.fac()[0] == 0;
        rom.call("float_sqr");
        EXPECT_EQ(rom.result(), root);
        EXPECT_EQ(rom.fac()[0] == 0, integer || root == 0) << root;
    }
}

TEST_F(Numbers, PowersAndTheirErrors) {
    const struct {
        real base, exponent, want;
        int error;
    } rows[] = {{0, 0, 1, 0},
                {0, 2, 0, 0},
                {0, -1, 0, err_zero},
                {0, .5L, 0, 0},
                {0, -.5L, 0, err_zero},
                {-8, 1 / 3.0L, 0, err_call},
                {-2, 3, -8, 0},
                {-2, -3, -.125L, 0},
                {-2, 200, 0, err_overflow},
                {2, 126, 0x1p126L, 0},
                {2, 127, 0, err_overflow},
                {10, -39, 0, 0},
                {.5L, 127, 0x1p-127L, 0},
                {.5L, 129, 0, 0},
                {1e30L, 1e30L, 0, err_overflow},
                {1e30L, -1e30L, 0, 0},
                {1 - 0x1p-32L, 1e-38L, 1, 0},
                {1 + 0x1p-31L, 1e-30L, 1, 0},
                {1.5L, 217, std::pow(1.5L, 217), 0},
                {1.5L, 218, 0, err_overflow},
                {-3, 41, std::pow(-3.0L, 41), 0},
                {2, -20, 0x1p-20L, 0},
                {1, 32000, 1, 0},
                {-1, 32001, -1, 0},
                {9, .5L, 3, 0},
                {7, 1, 7, 0},
                {5.5L, 0, 1, 0},
                {-1.5L, 2, 2.25L, 0},
                {10, 9, 1e9L, 0},
                {3, 20, 3486784401.0L, 0},
                {10, -2, .01L, 0},
                {2, .5L, std::sqrt(2.0L), 0}};
    for (const auto &row : rows) {
        rom.put(left, row.base);
        rom.put(rom.fac(), row.exponent);
        EXPECT_EQ(rom.call("float_power"), row.error) << row.base << '^' << row.exponent;
        if (row.error == 0) {
            EXPECT_LE(std::fabs(rom.result() - row.want), std::fabs(row.want) * 0x1p-29L)
                << row.base << '^' << row.exponent;
        }
    }
    for (const char *name : {"float_log", "float_sqr"}) {
        rom.put(rom.fac(), -1);
        EXPECT_EQ(rom.call(name), err_call) << name;
    }
    rom.put(rom.fac(), 89);
    EXPECT_EQ(rom.call("float_exp"), err_overflow);
}

// Of y log2(x) seven bits stand before the point at most; the logarithm has them in store. What has 32 bits
// is exact.
TEST_F(Numbers, PowersAreWithin2ToTheMinus29) {
    std::uniform_real_distribution<double> part(0, 1);
    const auto from = [&](real low, real high) { return low + part(operand.next) * (high - low); };
    for (int i = 0; i < points() && !HasFailure(); ++i) {
        real base = std::exp(from(-10, 10)), exponent = from(-30, 30);
        switch (i % 6) {
        case 0: exponent = operand.below(200) - 100; break;
        case 1: base = operand.below(1000) + 1, exponent = operand.below(60) - 20; break;
        case 2: // near 1, where the logarithm is small
            base = 1 + from(-1, 1) * std::exp(from(-20, -1));
            exponent = from(-88, 88) / std::log(base);
            break;
        case 3: base = std::exp(from(-87, 87)), exponent = from(-1, 1); break;
        case 4: base = from(.4L, 2.5L), exponent = from(-300, 300); break;
        default: break;
        }
        rom.put(left, base);
        rom.put(rom.fac(), exponent);
        base = rom.value(left), exponent = rom.result();
        const real want = std::pow(base, exponent);
        if (!std::isfinite(exponent) || std::fabs(std::log2(want)) > 126.9L) continue;
        ASSERT_EQ(rom.call("float_power"), 0) << base << '^' << exponent;
        EXPECT_LE(std::fabs(rom.result() / want - 1), 0x1p-29L) << base << '^' << exponent;
    }
    for (int base = -300; base <= 300; ++base)
        for (int exponent = 1;
             std::fabs(std::pow(static_cast<real>(base), exponent)) < 0x1p32L && exponent < 34; ++exponent) {
            rom.put(left, base);
            rom.put(rom.fac(), exponent);
            ASSERT_EQ(rom.call("float_power"), 0) << base << '^' << exponent;
            EXPECT_EQ(rom.result(), std::pow(static_cast<real>(base), exponent)) << base << '^' << exponent;
        }
}

TEST_F(Numbers, RandomOnesGoOnRepeatAndStartAgain) {
    const auto random = [&](int argument) {
        rom.put(rom.fac(), argument);
        EXPECT_EQ(rom.call("float_rnd"), 0);
        return rom.result();
    };
    int tenths[10] = {};
    for (int i = 0; i < 10000; ++i) {
        const real r = random(1);
        ASSERT_TRUE(r >= 0 && r < 1) << r;
        ++tenths[static_cast<int>(r * 10)];
    }
    for (int count : tenths) EXPECT_NEAR(count, 1000, 120);
    const real last = random(1);
    EXPECT_EQ(random(0), last);
    EXPECT_NE(random(1), last);
    const real seeded = random(-7), next = random(1);
    EXPECT_NE(random(-8), seeded);
    EXPECT_EQ(random(-7), seeded);
    EXPECT_EQ(random(1), next);
}

TEST_F(Numbers, PrintUsing) {
    const struct {
        const char *format;
        real value;
        const char *want;
    } rows[] = {
        {"##", 5, " 5"},
        {"##", -5, "-5"},
        {"##", 123, "%123"},
        {"##", -12, "%-12"},
        {"##.##", .78L, " 0.78"},
        {"##.##", 10.2L, "10.20"},
        {"##.##", 5.3L, " 5.30"},
        {"##.##", 66.789L, "66.79"},
        {"##.##", .234L, " 0.23"},
        {"#.##", -.5L, "-.50"},
        {".##", .5L, ".50"},
        {".##", -.5L, "%-.50"},
        {".##", .999L, "%1.00"},
        {"+##.##", -68.95L, "-68.95"},
        {"+##.##", 2.4L, " +2.40"},
        {"+##.##", 55.6L, "+55.60"},
        {"+##.##", -.9L, " -0.90"},
        {"##.##-", -68.95L, "68.95-"},
        {"##.##-", 22.449L, "22.45 "},
        {"##.##+", 7, " 7.00+"},
        {"##.##+", -7, " 7.00-"},
        {"**#.#", 12.39L, "*12.4"},
        {"**#.#", -.9L, "*-0.9"},
        {"**#.#", 765.1L, "765.1"},
        {"$$###.##", 456.78L, " $456.78"},
        {"$$###.##", -6.5L, "  -$6.50"},
        {"\\\\###.##", 456.78L, " \\456.78"},
        {"**$##.##", 2.34L, "***$2.34"},
        {"**$##.##", -2.34L, "**-$2.34"},
        {"####,.##", 1234.5L, "1,234.50"},
        {"#,###,###", 1234567, "1,234,567"},
        {"#######,", 12, "      12"},
        {"####,", 1234567, "%1,234,567"},
        {"#,###", 999.6L, "1,000"},
        {"##.##^^^^", 234.56L, " 2.35E+02"},
        {".####^^^^", 888888, ".8889E+06"},
        {".####^^^^-", 888888, ".8889E+06 "},
        {"+.##^^^^", 123, "+.12E+03"},
        {"##.##^^^^", -234.56L, "-2.35E+02"},
        {"##.##^^^^", 0, " 0.00E+00"},
        {"##.#^^^^", 9.99L, " 1.0E+01"},
        {"##^^^^", 1e-20L, " 1E-20"},
        {"###.##^^^^", 12345, " 12.35E+03"},
        {"#.##^^^^-", -5, "5.00E+00-"},
        {"_!##.##_!", 12.34L, "!12.34!"},
        {"x=## y", 7, "x= 7 y"},
        {"###", 0, "  0"},
        {"#", 0, "0"},
        {"#.#", 0, "0.0"},
        {".#", 0, ".0"},
        {"###.", 12.5L, " 13."},
        {"#", -.3L, "%-0"},
        {"##", -.3L, "-0"},
        {"##", .5L, " 1"},
        {"##", 9.5L, "10"},
        {"##", 99.5L, "%100"},
        {"##########", 1e9L, "1000000000"},
        {"############", 123456789012.L, "123456789000"},
        {"#.#########", .123456789L, "0.123456789"},
        {"#.##", .005L, "0.01"},
        {"#.##", .0049L, "0.00"},
        {"#.##", 1.005L, "1.01"},
        {"##.####", .00001L, " 0.0000"},
        {"#.", 1e-30L, "0."},
        {"##", 1e38L, "%100000000000000000000000000000000000000"},
        {"+##", 5, " +5"},
        {"+#", 5, "+5"},
        {"+#", 50, "%+50"},
        {"a*b#", 5, "a*b5"},
        {"+a#", 5, "+a5"},
        {"...#", .5L, "...5"},
        {"##,##", 12, "   12"},
        {"-##", -5, "--5"},
        {"^##", 5, "^ 5"},
        {"##^^", 5, " 5^^"},
    };
    const auto begin = [&](const char *format) {
        rom.put_text(rom.at("LINE_TEXT"), format);
        const uint16_t start = rom.at("LINE_TEXT");
        std::memcpy(rom.memory + rom.at("using_pointer"), &start, 2);
        rom.memory[rom.at("using_seen")] = 0;
        const int error = rom.call("using_to_field");
        return error == 0 ? rom.output : "error " + std::to_string(error);
    };
    for (const auto &row : rows) {
        std::string shown = begin(row.format);
        rom.put(rom.fac(), row.value);
        EXPECT_EQ(rom.call("using_number"), 0);
        shown += rom.output;
        rom.call("using_rest");
        EXPECT_EQ(shown + rom.output, row.want) << row.format << ' ' << row.value;
    }
    for (const char *format : {"abc", "*", "+", ".", "#########################"})
        EXPECT_EQ(begin(format).substr(begin(format).find("error")), "error 5") << format;
    const struct {
        const char *format, *text, *want;
    } strings[] = {{"!", "hello", "h"},       {"& &", "hello", "hel"}, {"&    &|", "hi", "hi    |"},
                   {"\\ \\", "hello", "hel"}, {"&", "hello", "hello"}, {"@.", "hello", "hello."},
                   {"&&x", "hello", "hex"},   {"!", "", " "},          {"\\\\", "abc", "ab"}};
    for (const auto &row : strings) {
        std::string shown = begin(row.format);
        rom.put_text(rom.text, row.text);
        rom.cpu.BC = static_cast<uint16_t>(std::strlen(row.text) << 8);
        rom.cpu.DE = rom.text;
        EXPECT_EQ(rom.call("using_string"), 0);
        shown += rom.output;
        rom.call("using_rest");
        EXPECT_EQ(shown + rom.output, row.want) << row.format << ' ' << row.text;
    }
}

} // namespace
