// The help text byte for byte, as a Japanese code page stores it.
#include "app/kiv_help.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <string>

namespace {

TEST(Help, TextHas33LinesAnd1232BytesInShiftJis) {
    const iconv_t converter = iconv_open("CP932", "UTF-8");
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    std::string in = help_text, out(4096, '\0');
    EXPECT_EQ(make_help_dialog().text, in + help_more);
    char *from = in.data(), *to = out.data();
    size_t left = in.size(), room = out.size();
    EXPECT_EQ(iconv(converter, &from, &left, &to, &room), 0u) << "stopped at: " << from;
    iconv_close(converter);
    out.resize(out.size() - room);
    EXPECT_EQ(out.size(), 1232u);

    size_t lines = 0;
    for (size_t at = 0; at < in.size(); ++lines) {
        const size_t end = in.find("\r\n", at);
        ASSERT_NE(end, std::string::npos) << "a line without its end: " << in.substr(at);
        EXPECT_EQ(in.substr(at, end - at).find_first_of("\r\n"), std::string::npos);
        at = end + 2;
    }
    EXPECT_EQ(lines, 33u);
}

} // namespace
