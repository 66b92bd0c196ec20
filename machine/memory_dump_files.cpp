#include "machine/memory_dump.h"
#include "machine/read_exactly.h"
#include "platform/file.h"
#include "support/kel_fstream.h"
#include "support/log.h"

#include <algorithm>
#include <array>
#include <vector>

bool memory_dump_save(const std::string &path, const z80_cpu &cpu) {
    std::array<uint8_t, dump_size> dump;
    memory_dump_make(dump.data(), cpu);
    if (platform::atomic_write(path, dump.data(), dump.size())) return true;
    trace("dump: %s cannot be written: %s", path.c_str(), platform::last_file_error().c_str());
    return false;
}

bool memory_dump_load(const std::string &path, z80_cpu &cpu) {
    kel_fstream file;
    if (!file.open(path.c_str(), 1, 0)) {
        trace("dump: %s cannot be opened: %s", path.c_str(), platform::last_file_error().c_str());
        return false;
    }
    const uint32_t size = file.size();
    if (size < dump_minimum) {
        trace("dump: %s has %u bytes, fewer than %u", path.c_str(), size, dump_minimum);
        return false;
    }
    std::vector<uint8_t> dump(std::min(size, dump_maximum));
    if (!read_exactly(file, dump.data(), static_cast<uint32_t>(dump.size()))) {
        trace("dump: the %u bytes of %s cannot be read", size, path.c_str());
        return false;
    }
    return memory_dump_apply(dump.data(), dump.size(), cpu);
}
