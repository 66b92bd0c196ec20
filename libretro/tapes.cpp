#include "libretro/tapes.h"

#include "api/kiv.h"

#include <cstdio>
#include <filesystem>
#include <vector>

namespace {

struct tape {
    std::string path;
    std::vector<uint8_t> bytes;
};

std::vector<tape> tapes;
unsigned in_deck = 0; // index; past the list: none
bool ejected = false;

bool read_file(const char *path, std::vector<uint8_t> &bytes) {
    std::FILE *file = std::fopen(path, "rb");
    if (file == nullptr) return false;
    bytes.clear();
    uint8_t block[65536];
    for (size_t n; (n = std::fread(block, 1, sizeof block, file)) > 0;)
        bytes.insert(bytes.end(), block, block + n);
    const bool whole = std::ferror(file) == 0;
    std::fclose(file);
    return whole;
}

bool take(tape &into, const retro_game_info &info) {
    into.path = info.path != nullptr ? info.path : "";
    if (info.data != nullptr) {
        const auto *bytes = static_cast<const uint8_t *>(info.data);
        into.bytes.assign(bytes, bytes + info.size);
        return true;
    }
    return info.path != nullptr && read_file(info.path, into.bytes);
}

void put_into_deck() {
    if (ejected || in_deck >= tapes.size())
        kiv_tape_eject();
    else
        kiv_tape_insert(tapes[in_deck].bytes.data(), tapes[in_deck].bytes.size());
}

bool set_eject_state(bool out) {
    if (ejected == out) return true;
    ejected = out;
    put_into_deck();
    return true;
}

bool set_image_index(unsigned index) {
    if (!ejected) return false;
    in_deck = index;
    return true;
}

bool replace_image_index(unsigned index, const retro_game_info *info) {
    if (!ejected || index >= tapes.size()) return false;
    if (info != nullptr) return take(tapes[index], *info);
    tapes.erase(tapes.begin() + index);
    if (in_deck > index) --in_deck;
    return true;
}

bool add_image_index() {
    tapes.emplace_back();
    return true;
}

bool copy_out(const std::string &text, char *to, size_t size) {
    if (to == nullptr || size == 0) return false;
    std::snprintf(to, size, "%s", text.c_str());
    return !text.empty();
}

bool get_image_path(unsigned index, char *path, size_t size) {
    return index < tapes.size() && copy_out(tapes[index].path, path, size);
}

bool get_image_label(unsigned index, char *label, size_t size) {
    return index < tapes.size() &&
           copy_out(std::filesystem::path(tapes[index].path).stem().string(), label, size);
}

} // namespace

void announce_tapes(retro_environment_t environment) {
    static retro_disk_control_ext_callback control{
        set_eject_state,
        [] { return ejected; },
        [] { return in_deck; },
        set_image_index,
        [] { return static_cast<unsigned>(tapes.size()); },
        replace_image_index,
        add_image_index,
        [](unsigned index, const char *) {
            in_deck = index;
            return true;
        },
        get_image_path,
        get_image_label,
    };
    unsigned version = 0;
    if (environment(RETRO_ENVIRONMENT_GET_DISK_CONTROL_INTERFACE_VERSION, &version) && version >= 1)
        environment(RETRO_ENVIRONMENT_SET_DISK_CONTROL_EXT_INTERFACE, &control);
    else // the older interface is the beginning of the newer one
        environment(RETRO_ENVIRONMENT_SET_DISK_CONTROL_INTERFACE, &control);
}

bool tapes_begin(const retro_game_info &content) {
    tapes.assign(1, {});
    ejected = false;
    in_deck = 0;
    if (!take(tapes[0], content)) return false;
    put_into_deck();
    return true;
}

void tapes_clear() {
    tapes.clear();
    ejected = false;
    in_deck = 0;
    kiv_tape_eject();
}

bool load_with_its_tape(const void *snapshot, size_t size) {
    kiv_result result = kiv_snapshot_load(snapshot, size);
    const unsigned before = in_deck;
    const bool was_ejected = ejected;
    for (unsigned i = 0; result == KIV_ERROR_OTHER_TAPE && i <= tapes.size(); ++i) {
        in_deck = i; // the last round is the empty deck
        ejected = i == tapes.size();
        put_into_deck();
        result = kiv_snapshot_load(snapshot, size);
    }
    if (result == KIV_OK) return true;
    if (in_deck != before || ejected != was_ejected) {
        in_deck = before;
        ejected = was_ejected;
        put_into_deck();
    }
    return false;
}
