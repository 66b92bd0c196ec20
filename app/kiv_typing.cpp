// Text typed for the person, and what a file that is dropped on the window or named at the start is for.
#include "app/form_scopes.h"
#include "app/kiv_form.h"

#include "api/kiv.h"
#include "app/program.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/file.h"
#include "platform/texts.h"
#include "support/host_keys.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

constexpr uint32_t typing_tick_ms = 8;
constexpr uint64_t frames_of_boot = 120; // until a ROM takes what is typed or put into it
constexpr size_t most_typed_bytes = 1 << 20;

std::string extension_of(const std::string &path) {
    std::string e = fs::path(path).extension();
    for (char &c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return e;
}

} // namespace

void kiv_form::paste() { type_text(host.clipboard_text()); }

// What no key types is left out, and counted.
void kiv_form::type_text(const std::string &text) {
    if (text.empty()) return;
    if (text.size() > most_typed_bytes) {
        tell_fault(platform::text("長すぎて打てません"));
        return;
    }
    uint32_t left_out = 0;
    std::string typed; // where the debugger's history has to know of it
    const char *at = text.c_str(), *from = at;
    for (uint32_t character = next_character(at); character != 0; from = at, character = next_character(at)) {
        key_stroke stroke{};
        if (character == '\r') continue;
        if (!stroke_of(character, stroke) || (session() == nullptr && !typing.add(stroke)))
            ++left_out;
        else if (session() != nullptr)
            typed.append(from, at);
    }
    if (session() != nullptr) at_machine([typed] { kiv_type(typed.c_str()); });
    typing_total = typing.waiting();
    if (left_out != 0) notify(std::to_string(left_out) + platform::text(" 文字は打てません"));
    if (typing_ticks || typing.waiting() == 0) return;
    typing_ticks = true;
    apply_speed();
    host.every(typing_tick_ms, [this] { return type_on(); });
}

// False: nothing is left to type.
bool kiv_form::type_on() {
    // As fast as the host goes a key would be down for many frames, and repeat: not before the machine has
    // come down to its own speed.
    if (in_dialog || deactivated || held || program.cpu_thread->is_at_any_speed()) return attached;
    typing.at_frame(program.directx->frames_drawn());
    typing_ticks = typing.waiting() != 0 && attached;
    if (!typing_ticks && attached) apply_speed();
    if (const uint32_t done = typing_total - typing.waiting(); typing_ticks && done % 64 == 1 && done > 64)
        notify(std::to_string(done) + " / " + std::to_string(typing_total) + platform::text("  (Escで中止)"));
    return typing_ticks;
}

// True: the key has done that, and is nobody else's.
bool kiv_form::stops_typing(uint32_t virtual_key) {
    if (virtual_key == vk_escape && session() != nullptr) at_machine(kiv_type_cancel);
    if (virtual_key != vk_escape || typing.waiting() == 0) return false;
    typing.cancel();
    notify(platform::text("打つのをやめました"));
    return true;
}

void kiv_form::dropped(const std::string &path) {
    if (!in_dialog && !deactivated) use_file(path);
}

// By what it is.
void kiv_form::use_file(const std::string &path) {
    std::error_code ignored;
    const std::string extension = extension_of(path);
    if (fs::is_directory(path, ignored)) {
        use_rom_folder(path);
    } else if (extension == ".kst") {
        load_state_file(path, path.substr(path.rfind('/') + 1));
    } else if (extension == ".bas" || extension == ".txt") {
        std::ifstream in(path, std::ios::binary);
        if (!in) {
            tell_fault(path + ": " + platform::text("読めません"));
            return;
        }
        type_text({std::istreambuf_iterator<char>(in), {}});
    } else {
        const pause_scope pause(*this);
        if (!pause) return;
        const bool loaded = load_file(path);
        machine.cassette_set_stopped(loaded);
        release_keys();
    }
}

// Once the machine has booted, as a dump or a program put in earlier would be wiped out.
void kiv_form::use_file_of_command_line() {
    if (options.file.empty()) return;
    const uint64_t due = extension_of(options.file) == ".kst" ? 1 : frames_of_boot;
    host.every(typing_tick_ms, [this, due] {
        if (!attached || program.directx == nullptr) return false;
        if (program.directx->frames_drawn() < due) return true;
        use_file(options.file);
        return false;
    });
}
