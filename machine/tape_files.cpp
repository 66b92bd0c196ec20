#include "machine/tape_files.h"

#include "machine/kiv_machine.h"
#include "machine/read_exactly.h"
#include "support/kel_fstream.h"
#include "support/log.h"
#include "support/tape_writer.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

tape_writer output;
const cassette_recorder into_output = {[](uint8_t byte) { output.put(byte); }, [] { output.flush(); }};

} // namespace

bool cassette_load_tape(const std::string &path) {
    output.flush(); // the tape may be the one just written
    const platform::file_handle handle = platform::open_file(path, true);
    if (handle == platform::invalid_file) {
        trace("tape: %s cannot be opened: %s", path.c_str(), platform::last_file_error().c_str());
        return false;
    }
    kel_fstream file;
    file.attach(handle, 1);
    // The stream knows the low 32 bits of a size only.
    const int64_t bytes = platform::file_size(handle);
    if (bytes < 0 || bytes >= UINT32_MAX) {
        trace("tape: %s has 4 GiB or more", path.c_str());
        return false;
    }
    const auto size = static_cast<uint32_t>(bytes);
    cassette_eject(machine);
    machine.tape_size = size;
    // One byte more than the tape, so that an empty tape is a tape all the same.
    std::unique_ptr<uint8_t[]> image(new (std::nothrow) uint8_t[static_cast<size_t>(size) + 1]);
    if (image == nullptr) {
        trace("tape: no memory for the %u bytes of %s", size, path.c_str());
        return false;
    }
    if (!read_exactly(file, image.get(), size)) {
        trace("tape: the %u bytes of %s cannot be read", size, path.c_str());
        cassette_eject(machine);
        return false;
    }
    if (cassette_insert(std::move(image), size)) return true;
    trace("tape: no memory to index the %u bytes of %s", size, path.c_str());
    return false;
}

bool cassette_set_output(const std::string &path) {
    if (path.size() >= tape_path_size) return false;
    std::memcpy(machine.tape_out_path, path.c_str(), path.size() + 1);
    output.set_path(path);
    cassette_record_with(into_output);
    return true;
}

void cassette_set_output(tape_writer::sink sink, const std::string &name) {
    machine.tape_out_path[0] = '\0';
    output.set_sink(std::move(sink), name);
    cassette_record_with(into_output);
}

const std::string &cassette_output_failure() { return output.failure(); }
void cassette_on_output_failure(tape_writer::failure_listener listener) { output.on_failure(listener); }
