#include "tools/kiv_run_typing.h"

#include "api/kiv.h"
#include "support/host_keys.h"
#include "tools/kiv_run_options.h"

#include <utility>

namespace {

constexpr uint32_t pause_frames = 28;

constexpr std::pair<char, uint8_t> escape_keys[] = {
    {'n', vk_return}, {'e', vk_escape}, {'t', vk_tab},  {'b', vk_back},
    {'u', vk_up},     {'d', vk_down},   {'l', vk_left}, {'r', vk_right},
};

// The whole UTF-8 character at `at`, for a message.
std::string character_at(const std::string &text, size_t at) {
    const char *end = text.c_str() + at;
    next_character(end);
    return text.substr(at, static_cast<size_t>(end - text.c_str()) - at);
}

} // namespace

typed_text::typed_text(const std::string &text) {
    for (size_t i = 0; i < text.size();) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] != '\\') {
            const char escape = text[++i];
            key_stroke stroke = {0, false};
            for (const auto &[letter, virtual_key] : escape_keys)
                if (letter == escape) stroke.virtual_key = virtual_key;
            if (escape == 'f' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '5')
                stroke.virtual_key = static_cast<uint8_t>(vk_f1 + (text[++i] - '1'));
            if (escape != 'p' && stroke.virtual_key == 0)
                throw run_failure("--type: \\" + character_at(text, i) + " stands for no key");
            items.push_back({stroke, escape == 'p' ? pause_frames : 0});
            ++i;
            continue;
        }
        if (text[i] == '\\' && i + 1 < text.size()) ++i; // a doubled backslash is one
        key_stroke stroke;
        const char *at = text.c_str() + i;
        if (!stroke_of(next_character(at), stroke))
            throw run_failure("--type: no key types '" + character_at(text, i) + "'");
        items.push_back({stroke, 0});
        i = static_cast<size_t>(at - text.c_str());
    }
}

void typed_text::start() const {
    for (const item &i : items) {
        if (i.pause != 0)
            kiv_type_pause(i.pause);
        else
            kiv_type_key(i.stroke.virtual_key, i.stroke.shifted);
    }
}

uint64_t typed_text::frames() const {
    uint64_t now = 0, released = 0;
    for (const item &i : items) {
        if (i.pause == 0) released = now + stroke_held_frames(i.stroke.shifted);
        now += i.pause != 0 ? i.pause : stroke_frames(i.stroke.shifted);
    }
    return released;
}
