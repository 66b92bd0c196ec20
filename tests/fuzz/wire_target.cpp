#include "debug/wire/gdb_stub.h"
#include "tests/fuzz/fuzz_targets.h"

#include <cstdlib>

// Each byte 0xFF of the input is a slice of the machine; what lies between two comes over the wire. A 0xFE
// has the packet behind it, up to the next 0xFE or 0xFF, framed and summed, so that it is not refused for its
// sum.
int fuzz_wire(const uint8_t *data, size_t size) {
    const uint8_t rom[] = {0x31, 0x00, 0xF0, 0x21, 0x00, 0x90, 0x34, 0xCD,
                           0x0C, 0x00, 0x18, 0xFA, 0xD3, 0x40, 0xC9};
    if (kiv_rom(KIV_ROM_MAIN, rom, sizeof rom) != KIV_OK || kiv_boot() != KIV_OK) std::abort();
    debug_driver driver;
    driver.keep_history({.bytes = size_t{4} << 20, .t_states = 4000000});
    gdb_stub stub(driver);
    stub.monitor = [](const std::string &line) { return line; };
    stub.attach();
    const auto turn = [&] {
        for (int i = 0; i < 3; ++i) {
            if (stub.runs()) stub.has_stopped(driver.run_slice(3000));
            if (stub.waits()) stub.receive({});
        }
        packet_reader reader; // what is sent is well formed
        reader.take(stub.output());
        while (const auto event = reader.next())
            if (event->what == packet_event::is::spoilt) std::abort();
        stub.output().clear();
        if (stub.leaves()) stub.attach();
    };
    std::string_view left(reinterpret_cast<const char *>(data), size);
    while (!left.empty()) {
        const bool framed = left.front() == '\xFE';
        if (framed || left.front() == '\xFF') left.remove_prefix(1);
        const std::string_view said = left.substr(0, left.find_first_of("\xFE\xFF"));
        left.remove_prefix(said.size());
        stub.receive(framed ? packet_of(said) : std::string(said));
        turn();
    }
    stub.has_ended(0);
    if (stub.output().size() > size_t{64} << 20) std::abort();
    return 0;
}
