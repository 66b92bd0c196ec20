#include "app/keyboard_page.h"

#include "platform/texts.h"
#include "support/host_keys.h"

#include <algorithm>

namespace {

using platform::shown_key;
using platform::text;

constexpr int key(int row, int bit) { return row * 8 + bit; }

// `sign`: a key of the signs, which a layout may have elsewhere.
struct page_key {
    int place; // row * 8 + bit
    int width; // in quarters of a key
    const char *label;
    const char *host; // the host's key, as a US keyboard has it printed, where it has another name
    bool sign = false;
    shown_key::kinds kind = shown_key::plain;
};
constexpr page_key gap(int width) { return {-1, width, "", ""}; }

constexpr page_key row0[] = {
    {key(9, 0), 6, "STOP", "Backspace"},
    {key(10, 4), 6, "COPY", "PrtSc"},
    gap(4),
    {key(9, 1), 7, "f1", ""},
    {key(9, 2), 7, "f2", ""},
    {key(9, 3), 7, "f3", ""},
    {key(9, 4), 7, "f4", ""},
    {key(9, 5), 7, "f5", ""},
    gap(15),
    {key(8, 1), 4, "\u2191", ""},
    {key(10, 1), 4, "\u2193", ""},
    {key(10, 2), 4, "\u2190", ""},
    {key(8, 2), 4, "\u2192", ""},
};
constexpr page_key row1[] = {
    {key(9, 7), 4, "ESC", ""},         {key(6, 1), 4, "!\n1", "", true},
    {key(6, 2), 4, "\"\n2", "", true}, {key(6, 3), 4, "#\n3", "", true},
    {key(6, 4), 4, "$\n4", "", true},  {key(6, 5), 4, "%\n5", "", true},
    {key(6, 6), 4, "&\n6", "", true},  {key(6, 7), 4, "'\n7", "", true},
    {key(7, 0), 4, "(\n8", "", true},  {key(7, 1), 4, ")\n9", "", true},
    {key(6, 0), 4, "\n0", "", true},   {key(5, 7), 4, "=\n-", "", true},
    {key(5, 6), 4, "~\n^", "=", true}, {key(5, 4), 4, "|\n\u00A5", "`", true},
    {key(8, 3), 6, "INS\nDEL", "Del"}, gap(4),
    {key(8, 0), 4, "CLR\nHOME", ""},   {key(10, 3), 4, "HELP", "Alt+F11"},
    {key(10, 5), 4, "-", ""},          {key(10, 6), 4, "/", ""},
};
constexpr page_key row2[] = {
    {key(10, 0), 6, "TAB", ""},        {key(4, 1), 4, "Q", ""},           {key(4, 7), 4, "W", ""},
    {key(2, 5), 4, "E", ""},           {key(4, 2), 4, "R", ""},           {key(4, 4), 4, "T", ""},
    {key(5, 1), 4, "Y", ""},           {key(4, 5), 4, "U", ""},           {key(3, 1), 4, "I", ""},
    {key(3, 7), 4, "O", ""},           {key(4, 0), 4, "P", ""},           {key(2, 0), 4, "`\n@", "[", true},
    {key(5, 3), 4, "{\n[", "]", true}, {key(1, 7), 8, "RETURN", "Enter"}, gap(4),
    {key(0, 7), 4, "7", ""},           {key(1, 0), 4, "8", ""},           {key(1, 1), 4, "9", ""},
    {key(1, 2), 4, "*", ""},
};
constexpr page_key row3[] = {
    {key(8, 7), 4, "CTRL", "", false, shown_key::until_next},
    {key(10, 7), 4, "CAPS", "NumLk", false, shown_key::turning},
    {key(2, 1), 4, "A", ""},
    {key(4, 3), 4, "S", ""},
    {key(2, 4), 4, "D", ""},
    {key(2, 6), 4, "F", ""},
    {key(2, 7), 4, "G", ""},
    {key(3, 0), 4, "H", ""},
    {key(3, 2), 4, "J", ""},
    {key(3, 3), 4, "K", ""},
    {key(3, 4), 4, "L", ""},
    {key(7, 3), 4, "+\n;", "", true},
    {key(7, 2), 4, "*\n:", "'", true},
    {key(5, 5), 4, "}\n]", "\\", true},
    gap(10),
    {key(0, 4), 4, "4", ""},
    {key(0, 5), 4, "5", ""},
    {key(0, 6), 4, "6", ""},
    {key(1, 3), 4, "+", ""},
};
constexpr page_key row4[] = {
    {key(8, 6), 10, "SHIFT", "", false, shown_key::until_next},
    {key(5, 2), 4, "Z", ""},
    {key(5, 0), 4, "X", ""},
    {key(2, 3), 4, "C", ""},
    {key(4, 6), 4, "V", ""},
    {key(2, 2), 4, "B", ""},
    {key(3, 6), 4, "N", ""},
    {key(3, 5), 4, "M", ""},
    {key(7, 4), 4, "<\n,", "", true},
    {key(7, 5), 4, ">\n.", "", true},
    {key(7, 6), 4, "?\n/", "", true},
    {key(7, 7), 4, "_", "PgUp", true},
    {key(8, 6), 8, "SHIFT", "", false, shown_key::until_next},
    gap(4),
    {key(0, 1), 4, "1", ""},
    {key(0, 2), 4, "2", ""},
    {key(0, 3), 4, "3", ""},
    {key(1, 4), 4, "=", "Alt+="},
};
constexpr page_key row5[] = {
    gap(8),
    {key(8, 5), 6, "カナ", "CapsLk, PgDn", false, shown_key::turning},
    {key(8, 4), 6, "GRPH", "無変換", false, shown_key::until_next},
    {key(9, 6), 28, "", ""},
    gap(18),
    {key(0, 0), 4, "0", ""},
    {key(1, 5), 4, ",", "Alt+,"},
    {key(1, 6), 4, ".", ""},
    {key(1, 7), 4, "RET", "Enter"},
};

struct page_row {
    const page_key *keys;
    size_t count;
};
constexpr page_row rows[] = {{row0, std::size(row0)}, {row1, std::size(row1)}, {row2, std::size(row2)},
                             {row3, std::size(row3)}, {row4, std::size(row4)}, {row5, std::size(row5)}};

std::string label_of(const page_key &key) { return *key.label == '\0' ? std::string() : text(key.label); }

} // namespace

platform::keyboard_page make_keyboard_page(bool by_character, bool tenkeyless, bool back_deletes) {
    platform::keyboard_page page;
    page.title = text("本体のキーボード");
    page.hint = text("青: PCのキー   右クリック: 押したままにする");
    for (size_t y = 0; y < std::size(rows); ++y) {
        int x = 0;
        for (size_t i = 0; i < rows[y].count; x += rows[y].keys[i].width, ++i) {
            const page_key &k = rows[y].keys[i];
            if (k.place < 0) continue;
            const std::string label = label_of(k);
            std::string host = k.sign && by_character ? "" : k.host;
            if (host == "無変換") host = text("無変換、右Alt");
            if (back_deletes && k.place == key(9, 0)) host = "Alt+BkSp";
            if (back_deletes && k.place == key(8, 3)) host = "BkSp";
            constexpr int ten_key_arrows[] = {key(0, 2), key(0, 4), key(0, 6), key(1, 0)};
            constexpr const char *arrows[] = {"\u2193", "\u2190", "\u2192", "\u2191"};
            for (size_t a = 0; a < std::size(arrows) && tenkeyless; ++a)
                if (k.place == ten_key_arrows[a]) host = arrows[a];
            page.keys.push_back({vk_matrix + static_cast<uint32_t>(k.place), x, static_cast<int>(y) * 4,
                                 k.width, 4, label, host, k.kind});
        }
    }
    return page;
}

std::vector<named_key> names_of_keys() {
    std::vector<named_key> names{{text("なし"), 0}};
    for (const page_row &row : rows)
        for (size_t i = 0; i < row.count; ++i) {
            const page_key &k = row.keys[i];
            const uint32_t code = vk_matrix + static_cast<uint32_t>(k.place);
            if (k.place < 0 ||
                std::any_of(names.begin(), names.end(), [&](auto &n) { return n.code == code; }))
                continue;
            std::string name = label_of(k);
            if (name.empty()) name = text("スペース");
            // "!\n1" is called 1; INS DEL and the like keep both.
            if (const size_t line = name.find('\n'); line != std::string::npos)
                name = k.sign ? name.substr(line + 1) : name.substr(0, line) + " " + name.substr(line + 1);
            const int matrix_row = k.place / 8;
            const bool ten_key = matrix_row < 2 && k.place != key(1, 7);
            if (ten_key || k.place == key(10, 5) || k.place == key(10, 6)) name.insert(0, text("テンキー "));
            names.push_back({name, code});
        }
    return names;
}
