#include "support/tape_writer.h"

#include "support/log.h"

namespace {

constexpr size_t collect_at_most = 1 << 16;

bool append(const std::string &path, const uint8_t *bytes, size_t count) {
    const platform::file_handle handle = platform::append_file(path);
    if (handle == platform::invalid_file) return false;
    const bool written = platform::write_whole(handle, bytes, count);
    return platform::close_file(handle) && written;
}

} // namespace

tape_writer::~tape_writer() { flush(); }

void tape_writer::set_path(const std::string &new_path) {
    if (new_path.empty()) return set_sink(nullptr, {});
    set_sink([new_path](const uint8_t *bytes, size_t count) { return append(new_path, bytes, count); },
             new_path);
}

void tape_writer::set_sink(sink new_sink, const std::string &name) {
    flush();
    path = name;
    take = std::move(new_sink);
    collected.reserve(collect_at_most); // nothing is allocated while the machine runs
    reason.clear();
}

void tape_writer::put(uint8_t byte) {
    if (!take || !reason.empty()) return;
    collected.push_back(byte);
    if (collected.size() >= collect_at_most) flush();
}

void tape_writer::flush() {
    if (collected.empty()) return;
    const bool taken = take(collected.data(), collected.size());
    collected.clear();
    if (taken) return;
    reason = platform::last_file_error();
    trace("tape output: %s cannot be written: %s; nothing more is written until a file is chosen again",
          path.c_str(), reason.c_str());
    if (listener != nullptr) listener(path, reason);
}
