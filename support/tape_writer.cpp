#include "support/tape_writer.h"

#include "app/kiv_assay.h"

namespace {
constexpr size_t collect_at_most = 1 << 16;
}

tape_writer::~tape_writer() { flush(); }

void tape_writer::set_path(const std::string &new_path) {
    flush();
    path = new_path;
    collected.reserve(collect_at_most); // nothing is allocated while the machine runs
    failure_reported = false;
}

void tape_writer::put(uint8_t byte) {
    collected.push_back(byte);
    if (collected.size() >= collect_at_most) flush();
}

void tape_writer::flush() {
    if (collected.empty()) return;
    const platform::file_handle handle = platform::append_file(path);
    size_t done = 0;
    while (handle != platform::invalid_file && done < collected.size()) {
        const int64_t written =
            platform::write_file(handle, collected.data() + done, collected.size() - done);
        if (written <= 0) break;
        done += static_cast<size_t>(written);
    }
    if (done < collected.size() && !failure_reported) {
        failure_reported = true;
        trace("tape output: %s cannot be written: %s", path.c_str(), platform::last_file_error().c_str());
    }
    collected.clear();
    if (handle != platform::invalid_file) platform::close_file(handle);
}
