// States: the machine as it stands, in ten slots and in files, with a way back from a load.
#include "app/form_scopes.h"
#include "app/kiv_form.h"

#include "api/snapshot.h"
#include "app/program.h"
#include "app/state_fault.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/file.h"
#include "platform/texts.h"
#include "support/kel_exception.h"
#include "support/kel_fstream.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <ratio>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

constexpr char state_extension[] = ".kst", tag_of_picture[] = "PICT";
constexpr uint64_t most_state_bytes = uint64_t{1} << 30; // with the largest tape in it

std::string states_folder() {
    const char *data = std::getenv("XDG_DATA_HOME"), *home = std::getenv("HOME");
    if (data != nullptr && data[0] == '/') return std::string(data) + "/kiv/states/";
    return home != nullptr && home[0] == '/' ? std::string(home) + "/.local/share/kiv/states/"
                                             : std::string();
}

std::vector<uint8_t> state_now() {
    const snapshot_parts parts{program.directx->sound_state()};
    std::vector<uint8_t> bytes(snapshot_size(parts, tape_in_snapshot::whole));
    snapshot_write(parts, tape_in_snapshot::whole, bytes.data());
    return bytes;
}

constexpr int picture_width = kiv_directx::small_width, picture_height = kiv_directx::small_height;
constexpr size_t picture_head = 4, picture_bytes = picture_head + size_t{picture_width} * picture_height * 3;

// With what a person knows it by.
std::vector<uint8_t> state_with_picture() {
    std::vector<uint8_t> bytes = state_now();
    const std::vector<uint32_t> pixels = program.directx->small_picture();
    if (pixels.empty()) return bytes;
    std::vector<uint8_t> body = {picture_width & 0xFF, picture_width >> 8, picture_height & 0xFF,
                                 picture_height >> 8};
    for (const uint32_t p : pixels)
        for (const int shift : {16, 8, 0}) body.push_back(static_cast<uint8_t>(p >> shift));
    const size_t size = bytes.size();
    bytes.resize(size + snapshot_section_head + body.size());
    snapshot_append(bytes.data(), size, tag_of_picture, body.data(), body.size());
    return bytes;
}

std::shared_ptr<const platform::menu_picture> picture_in(const std::vector<uint8_t> &state) {
    size_t size = 0;
    const uint8_t *const body = snapshot_section(state.data(), state.size(), tag_of_picture, size);
    if (body == nullptr || size != picture_bytes || body[0] != picture_width || body[2] != picture_height)
        return nullptr;
    platform::menu_picture shown{picture_width, picture_height, {}};
    for (size_t at = picture_head; at < size; at += 3)
        shown.pixels.push_back(static_cast<uint32_t>(body[at] << 16 | body[at + 1] << 8 | body[at + 2]));
    return std::make_shared<const platform::menu_picture>(std::move(shown));
}

// The whole file; why it cannot be read in `wrong`.
std::vector<uint8_t> bytes_of(const std::string &path, std::string &wrong) {
    kel_fstream file;
    std::vector<uint8_t> bytes;
    if (!file.open(path.c_str(), 1, 0)) {
        wrong = platform::last_file_error();
        return bytes;
    }
    std::error_code error;
    const uint64_t size = fs::file_size(path, error);
    if (error || size > most_state_bytes) {
        wrong = state_fault(snapshot_fault::no_snapshot);
        return bytes;
    }
    bytes.resize(size);
    try {
        if (file.read(bytes.data(), 1, static_cast<uint32_t>(size)) != size)
            wrong = state_fault(snapshot_fault::damaged);
    } catch (const kel_exception &) {
        wrong = platform::last_file_error();
    }
    return bytes;
}

} // namespace

std::string kiv_form::state_path(uint32_t slot) {
    return states_folder() + "slot-" + std::to_string(slot) + state_extension;
}

// "2026-11-25 02:40:00"; empty: nothing is saved there.
std::string kiv_form::state_time(uint32_t slot) {
    struct stat file {};
    if (stat(state_path(slot).c_str(), &file) != 0) return {};
    std::tm local{};
    localtime_r(&file.st_mtime, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

// Read again when the file is another than the last time.
std::shared_ptr<const platform::menu_picture> kiv_form::state_picture(uint32_t slot) const {
    shown_state &shown = shown_states[slot];
    struct stat file {};
    if (stat(state_path(slot).c_str(), &file) != 0) {
        shown = {};
        return nullptr;
    }
    const int64_t saved_at = int64_t{file.st_mtim.tv_sec} * std::nano::den + file.st_mtim.tv_nsec;
    if (saved_at == shown.saved_at) return shown.picture;
    std::string wrong; // a state without a picture, then
    shown = {saved_at, picture_in(bytes_of(state_path(slot), wrong))};
    return shown.picture;
}

void kiv_form::save_state(uint32_t slot) {
    state_slot = slot;
    save_state_file(state_path(slot), platform::text("ステート") + " " + std::to_string(slot));
}

void kiv_form::load_state(uint32_t slot) {
    state_slot = slot;
    load_state_file(state_path(slot), platform::text("ステート") + " " + std::to_string(slot));
}

void kiv_form::save_state_file(const std::string &path, const std::string &name) {
    const pause_scope pause(*this);
    if (!pause) return;
    const std::vector<uint8_t> bytes = state_with_picture();
    tell_saved(platform::make_folder_of(path) && platform::atomic_write(path, bytes.data(), bytes.size()),
               path, name);
    window->menus_changed();
}

bool kiv_form::load_state_file(const std::string &path, const std::string &name) {
    std::string wrong;
    const std::vector<uint8_t> bytes = bytes_of(path, wrong);
    if (wrong.empty()) wrong = put_state(bytes);
    if (wrong.empty())
        notify(name + platform::text(" を読み込みました"));
    else
        tell_fault(path + ": " + wrong);
    return wrong.empty();
}

// What is thrown away can be taken back. Empty, or why not.
std::string kiv_form::put_state(const std::vector<uint8_t> &bytes) {
    const pause_scope pause(*this);
    if (!pause) return platform::text("本体が動いていません");
    std::vector<uint8_t> before = state_now();
    const snapshot_fault fault = snapshot_read({program.directx->sound_state()}, bytes.data(), bytes.size());
    if (fault != snapshot_fault::none) return state_fault(fault);
    before_load = std::move(before);
    machine_changed(true);
    release_keys();
    window->menus_changed();
    return {};
}

// Twice is as if nothing had been.
void kiv_form::undo_load() {
    if (before_load.empty()) return;
    const std::vector<uint8_t> back = before_load;
    const std::string wrong = put_state(back);
    if (wrong.empty())
        notify(platform::text("読み込みを取り消しました"));
    else
        tell_fault(wrong);
}

// The dialog is over, and with it what it holds the machine for, before the file is used: that parks and
// resumes by itself.
void kiv_form::choose_state_file(bool saving) {
    platform::file_dialog_options dialog;
    dialog.title = platform::text(saving ? "ステートの保存" : "ステートの選択");
    dialog.filter_name = platform::text("ステート");
    dialog.patterns = {std::string("*") + state_extension};
    dialog.file_name = saving ? "state" : "";
    dialog.default_extension = state_extension + 1;
    dialog.confirm_overwrite = saving;
    dialog.must_exist = !saving;
    std::string path;
    {
        const dialog_scope scope(*this, dialog_scope::release_keys);
        if (!scope) return;
        if (!(saving ? host.save_file(*window, dialog, path) : host.open_file(*window, dialog, path))) return;
    }
    const std::string name = path.substr(path.rfind('/') + 1);
    if (saving)
        save_state_file(path, name);
    else
        load_state_file(path, name);
}
