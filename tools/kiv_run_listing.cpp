#include "tools/kiv_run_listing.h"

#include "display/character_set.h"
#include "tools/kiv_run_options.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <numeric>

namespace {

constexpr char tape_leader = '\xFF', tape_start = '\x01', line_end = '\r', text_end = '\x1A';
constexpr size_t leader_size = 24, longest_line = 255, longest_name = 16;
constexpr unsigned last_line_number = 65529;
constexpr char32_t private_use = 0xE000; // codes without a character, one to one

// Katakana from U+30A1 on, and what the machine has for them.
constexpr std::u16string_view wide_kana[] = {
    u"ｧ",  u"ｱ",  u"ｨ",  u"ｲ",  u"ｩ",  u"ｳ",  u"ｪ",  u"ｴ", u"ｫ",  u"ｵ",  u"ｶ",  u"ｶﾞ", u"ｷ",  u"ｷﾞ", u"ｸ",
    u"ｸﾞ", u"ｹ",  u"ｹﾞ", u"ｺ",  u"ｺﾞ", u"ｻ",  u"ｻﾞ", u"ｼ", u"ｼﾞ", u"ｽ",  u"ｽﾞ", u"ｾ",  u"ｾﾞ", u"ｿ",  u"ｿﾞ",
    u"ﾀ",  u"ﾀﾞ", u"ﾁ",  u"ﾁﾞ", u"ｯ",  u"ﾂ",  u"ﾂﾞ", u"ﾃ", u"ﾃﾞ", u"ﾄ",  u"ﾄﾞ", u"ﾅ",  u"ﾆ",  u"ﾇ",  u"ﾈ",
    u"ﾉ",  u"ﾊ",  u"ﾊﾞ", u"ﾊﾟ", u"ﾋ",  u"ﾋﾞ", u"ﾋﾟ", u"ﾌ", u"ﾌﾞ", u"ﾌﾟ", u"ﾍ",  u"ﾍﾞ", u"ﾍﾟ", u"ﾎ",  u"ﾎﾞ",
    u"ﾎﾟ", u"ﾏ",  u"ﾐ",  u"ﾑ",  u"ﾒ",  u"ﾓ",  u"ｬ",  u"ﾔ", u"ｭ",  u"ﾕ",  u"ｮ",  u"ﾖ",  u"ﾗ",  u"ﾘ",  u"ﾙ",
    u"ﾚ",  u"ﾛ",  u"ﾜ",  u"ﾜ",  u"ｲ",  u"ｴ",  u"ｦ",  u"ﾝ", u"ｳﾞ", u"ｶ",  u"ｹ"};
static_assert(std::size(wide_kana) == 0x30F6 - 0x30A1 + 1);

// Other characters that stand for one of the machine's.
constexpr std::pair<char32_t, char16_t> stand_ins[] = {
    {U'\u3000', u' '}, {U'\u00A0', u' '}, {U'￥', u'\\'}, {U'¥', u'\\'}, {U'、', u'､'}, {U'。', u'｡'},
    {U'「', u'｢'},     {U'」', u'｣'},     {U'・', u'･'},  {U'ー', u'ｰ'}, {U'゛', u'ﾞ'}, {U'゜', u'ﾟ'},
    {U'“', u'"'},      {U'”', u'"'},      {U'‘', u'\''},  {U'’', u'\''}, {U'–', u'-'},  {U'−', u'-'},
};

// The next character of `text`, which moves on; U+FFFD for bytes that are no UTF-8.
char32_t take_character(std::string_view &text) {
    const auto byte = [&text](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t first = byte(0);
    const size_t size = first < 0x80   ? 1
                        : first < 0xC2 ? 0
                        : first < 0xE0 ? 2
                        : first < 0xF0 ? 3
                        : first < 0xF5 ? 4
                                       : 0;
    char32_t c = size < 2 ? first : first & (0x7FU >> size);
    size_t taken = 1;
    for (; taken < size && taken < text.size() && (byte(taken) & 0xC0) == 0x80; ++taken)
        c = c << 6 | (byte(taken) & 0x3F);
    text.remove_prefix(taken);
    return taken == size ? c : U'\uFFFD';
}

std::optional<char> code_of(char32_t c) {
    if (c >= 0x20 && c < 0x7F) return static_cast<char>(c);
    if (c >= private_use && c < private_use + 0x100) return static_cast<char>(c - private_use);
    for (unsigned code = 0x80; code < 0x100; ++code)
        if (character_of(static_cast<uint8_t>(code)) == c && c != U' ') return static_cast<char>(code);
    return std::nullopt;
}

// Appends what the machine has for `c`; false: nothing.
bool append_code(std::string &line, char32_t c) {
    if (c >= 0xFF01 && c <= 0xFF5E) c -= 0xFF01 - 0x21; // full-width ASCII
    if (c >= 0x3041 && c <= 0x3096) c += 0x30A1 - 0x3041;
    if (c >= 0x30A1 && c <= 0x30F6) {
        for (const char16_t half : wide_kana[c - 0x30A1]) line += *code_of(half);
        return true;
    }
    for (const auto &[from, to] : stand_ins)
        if (c == from) c = to;
    const std::optional<char> code = code_of(c);
    if (code) line += *code;
    return code.has_value();
}

char check_of(std::string_view text) {
    return static_cast<char>(-std::accumulate(text.begin(), text.end(), 0));
}

// The lines in the machine's characters, each ended by 0Dh.
class line_reader {
  public:
    explicit line_reader(const std::string &name) : file(name) {}
    void take(char32_t c) {
        if (c == U'\n' && after_return) {
            after_return = false;
            return;
        }
        after_return = c == U'\r';
        if (c == U'\r' || c == U'\n')
            end_line();
        else if (c == U'\t')
            line.append(8 - line.size() % 8, ' ');
        else if (!append_code(line, c))
            fail("the machine does not have the character " + name_of(c));
    }
    std::string finish() {
        if (!line.empty()) end_line();
        return std::move(text);
    }

  private:
    void end_line() {
        if (line.size() > longest_line) fail("longer than " + std::to_string(longest_line) + " characters");
        if (line.find_first_not_of(' ') == std::string::npos) line.clear();
        check_line_number();
        text += line + line_end;
        line.clear();
        ++number;
    }
    void check_line_number() const {
        if (line.empty()) return;
        const char *const digits = &line[line.find_first_not_of(' ')];
        if (*digits < '0' || *digits > '9') fail("no line number");
        if (std::strtoul(digits, nullptr, 10) > last_line_number)
            fail("the line number is above " + std::to_string(last_line_number));
    }
    static std::string name_of(char32_t c) {
        char text[16];
        std::snprintf(text, sizeof text, "U+%04X", static_cast<unsigned>(c));
        return text;
    }
    [[noreturn]] void fail(const std::string &why) const {
        throw run_failure(file + ": line " + std::to_string(number) + ": " + why);
    }

    const std::string &file;
    std::string text, line;
    size_t number = 1;
    bool after_return = false;
};

// What CLOAD asks for: the file's name without its ending, in capitals.
std::string name_on_tape(const std::string &file) {
    std::string name;
    const std::string stem = std::filesystem::path(file).stem().string();
    for (std::string_view rest = stem; !rest.empty();)
        if (!append_code(name, take_character(rest))) name += '_';
    for (char &c : name) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (static_cast<uint8_t>(c) < ' ' || c == '"') c = '_';
    }
    return name.substr(0, longest_name);
}

} // namespace

std::string listing_tape(std::string_view utf8, const std::string &file) {
    if (utf8.starts_with("\xEF\xBB\xBF")) utf8.remove_prefix(3);
    utf8 = utf8.substr(0, utf8.find(text_end));
    line_reader lines(file);
    while (!utf8.empty()) lines.take(take_character(utf8));
    const std::string text = lines.finish() + text_end;
    return std::string(leader_size, tape_leader) + tape_start + name_on_tape(file) + line_end + text +
           check_of(text);
}

std::optional<std::string> listing_of_tape(std::string_view tape) {
    const size_t start = tape.rfind(std::string{tape_leader, tape_start});
    if (start == std::string_view::npos) return std::nullopt;
    const size_t name_end = tape.find(line_end, start);
    if (name_end == std::string_view::npos) return std::nullopt;
    const std::string_view text = tape.substr(name_end + 1);
    const size_t end = text.find(text_end);
    if (end == std::string_view::npos || end + 1 >= text.size()) return std::nullopt;
    if (check_of(text.substr(0, end + 1)) != text[end + 1]) return std::nullopt;
    std::string listing;
    const auto put = [&listing](int byte) { listing += static_cast<char>(byte); };
    for (const char c : text.substr(0, end)) {
        const auto code = static_cast<uint8_t>(c);
        if (c == line_end)
            listing += '\n';
        else if (code >= 0x20 && code < 0x7F)
            listing += c;
        else if (const char16_t character = character_of(code); character != u' ')
            put_utf8(character, put);
        else
            put_utf8(static_cast<char16_t>(private_use + code), put);
    }
    return listing;
}
