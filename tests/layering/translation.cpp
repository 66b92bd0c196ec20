// Every Japanese text of the program has its English one, and no English one is left over.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace fs = std::filesystem;

namespace {

std::string whole(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string replaced(std::string text, const std::string &what, const std::string &by) {
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

bool has_japanese(const std::string &text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

bool in_word(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

// String literals with Japanese in them, neighbours joined; comments and log lines are for nobody's eyes.
std::set<std::string> texts_in(std::string source) {
    std::set<std::string> texts;
    std::string joined;
    bool in_trace = false;
    const auto end_text = [&] {
        if (has_japanese(joined) && !in_trace) texts.insert(joined);
        joined.clear();
    };
    for (size_t i = 0; i < source.size(); ++i) {
        if (source.compare(i, 2, "//") == 0) {
            i = std::min(source.find('\n', i), source.size());
        } else if (source.compare(i, 2, "R\"") == 0) { // a raw one has no Japanese
            i = source.find(")\"", i) + 1;
        } else if (source[i] == '"') {
            for (++i; i < source.size() && source[i] != '"'; ++i) {
                if (source[i] != '\\') {
                    joined += source[i];
                    continue;
                }
                const char c = source[++i];
                joined += c == 'n' ? '\n' : c == 'r' ? '\r' : c;
            }
        } else if (source[i] == '\'') {
            i = std::min(source.find('\'', i + (source[i + 1] == '\\' ? 3 : 2)), source.size());
        } else if (!std::isspace(static_cast<unsigned char>(source[i]))) {
            end_text();
            if (source.compare(i, 6, "trace(") == 0) in_trace = true;
            if (source[i] == ';') in_trace = false;
            // A whole word or number: the mark in 1'000 begins no character.
            const bool number = std::isdigit(static_cast<unsigned char>(source[i])) != 0;
            while (in_word(source[i]) && (in_word(source[i + 1]) || (number && source[i + 1] == '\''))) ++i;
        }
    }
    end_text();
    return texts;
}

std::string of_xml(std::string text) {
    for (const auto &[entity, c] :
         {std::pair{"&#xd;", "\r"}, {"&quot;", "\""}, {"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}})
        text = replaced(text, entity, c);
    return text;
}

TEST(Translation, TextsAreFoundAmongCharactersAndNumbers) {
    EXPECT_EQ(texts_in(R"(a(1'000, "あ"); b(u'"', '\'', 0x1'F); trace("い"); c(u8'x', "う" // え
                         "お", retrace_3 = 2'000'000);)"),
              (std::set<std::string>{"あ", "うお"}));
}

TEST(Translation, EveryTextHasItsEnglishOne) {
    const fs::path root = KIV_SOURCE_DIR;
    std::set<std::string> texts;
    for (const char *folder : {"app", "platform/desktop"})
        for (const auto &entry : fs::directory_iterator(root / folder))
            if (entry.path().extension() == ".cpp") texts.merge(texts_in(whole(entry.path())));
    EXPECT_GT(texts.size(), 50u);
    const std::string ts = whole(root / "translations/kiv_en.ts");
    std::map<std::string, std::string> english;
    const std::string begin = "<source>", middle = "</source>", open = "<translation>",
                      end = "</translation>";
    for (size_t at = 0; (at = ts.find(begin, at)) != std::string::npos;) {
        const size_t source = at + begin.size(), source_end = ts.find(middle, source),
                     target = ts.find(open, source_end) + open.size();
        at = ts.find(end, target);
        english[of_xml(ts.substr(source, source_end - source))] = of_xml(ts.substr(target, at - target));
    }
    for (const std::string &text : texts) EXPECT_FALSE(english[text].empty()) << "not translated: " << text;
    for (const auto &[source, target] : english) {
        EXPECT_TRUE(texts.contains(source) || !has_japanese(source)) << "translated, but nowhere: " << source;
        EXPECT_FALSE(has_japanese(replaced(replaced(target, "日本語", ""), "言語", ""))) << target;
    }
}

} // namespace
