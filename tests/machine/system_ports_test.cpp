// The port map: every port with every value does what its line says and nothing else.
#include "machine_fixture.h"

#include <algorithm>

namespace {

std::string calls; // device operations reached by the last access, in order

void call(const char *name, int a = -1, int b = -1) {
    calls += name;
    for (const int number : {a, b})
        if (number >= 0) calls += ' ' + std::to_string(number);
    calls += "; ";
}

struct SystemPorts : Machine {
    // Every device operation that a port reaches only reports itself.
    void SetUp() override {
        Machine::SetUp();
        machine.pcg_port = [](uint8_t port, uint8_t value) { call("pcg", port, value); };
        machine.usart_data_write = [](uint8_t value) { call("usart data", value); };
        machine.usart_command_write = [] { call("usart command", machine.port21); };
        machine.usart_data_read = [] { return call("usart data"), uint8_t{0x12}; };
        machine.usart_status_read = [] { return call("usart status"), uint8_t{0x34}; };
        machine.crtc_control = [](uint8_t value) { call("crtc control", value, machine.port30); };
        machine.crtc_parameter = [](uint8_t value) { call("crtc parameter", value); };
        machine.crtc_command = [](uint8_t value) { call("crtc command", value); };
        machine.cassette_port30 = [] { call("cassette", machine.port30); };
        machine.cassette_fast_load = [](uint8_t value) { call("fast load", value); };
        machine.calendar_port40 = [] { call("calendar", machine.port40); };
        machine.beep_on = [] { call("beep on"); };
        machine.beep_off = [] { call("beep off"); };
        machine.dma_address = [](uint8_t channel, uint8_t value) { call("dma address", channel, value); };
        machine.dma_count = [](uint8_t channel, uint8_t value) { call("dma count", channel, value); };
        machine.dma_mode = [](uint8_t value) { call("dma mode", value); };
        machine.sys_status_read = [] { call("status"), machine.sys_status = 0xA7; };
        calls.clear();
    }
};

// The port map for writes, a second time: the calls, and the changed fields in `m`.
void expect_write(kiv_machine &m, int port, uint8_t value) {
    const auto is = [port](int first, int last) { return first <= port && port <= last; };
    if (is(0x00, 0x0F)) call("pcg", port, value);
    if (is(0x10, 0x1F)) m.port10 = value;
    if (is(0x20, 0x2F) && port % 2 == 0) call("usart data", value);
    if (is(0x20, 0x2F) && port % 2 == 1) m.port21 = value, call("usart command", value);
    if (port == 0x30) m.port30 = value, call("crtc control", value, value), call("cassette", value);
    if (is(0x31, 0x3F)) m.port31 = value;
    if (port == 0x40)
        m.port40 = value, call("calendar", value), call(value / 0x20 % 2 ? "beep on" : "beep off");
    if (port == 0x50) call("crtc parameter", value);
    if (port == 0x51) call("crtc command", value);
    if (port == 0x53) m.crtc_status = static_cast<uint8_t>(m.crtc_status / 2 * 2 + value % 2);
    if (is(0x54, 0x5B)) m.palette[port - 0x54] = static_cast<uint8_t>(value % 8);
    if (is(0x5C, 0x5F)) m.gvram_select = uint8_t("\xF9\xFA\xFC\xF8"[port - 0x5C]);
    if (is(0x60, 0x67)) call(port % 2 ? "dma count" : "dma address", (port - 0x60) / 2, value);
    if (port == 0x68) call("dma mode", value);
    if (port == 0x70) m.port70 = value;
    if (port == 0x71) m.port71 = value;
    if (port == 0x78) m.port70 = static_cast<uint8_t>((m.port70 + 1) % 256);
    if (port == 0xE4) m.portE4 = value;
    if (port == 0xE6) m.portE6 = value;
    if (port == 0xF0) call("fast load", value);
}

TEST_F(SystemPorts, EveryWriteDoesWhatTheMapSays) {
    const auto expected = snapshot();
    const auto devices = [](const kiv_machine &m) {
        return std::string_view(reinterpret_cast<const char *>(&m) + sizeof(memory_areas),
                                sizeof m - sizeof(memory_areas));
    };
    for (int i = 0; i < 0x10000; ++i) {
        expect_write(*expected, i / 0x100, static_cast<uint8_t>(i));
        const std::string expected_calls = std::exchange(calls, {});
        out(i * 0x100 + i / 0x100, i); // the upper address byte counts for nothing
        ASSERT_EQ(std::exchange(calls, {}), expected_calls) << "OUT 0x" << std::hex << i;
        ASSERT_TRUE(devices(machine) == devices(*expected)) << "OUT 0x" << std::hex << i;
    }
    EXPECT_EQ(std::memcmp(&machine, expected.get(), sizeof machine), 0) << "glyphs or a fast load";
}

TEST_F(SystemPorts, EveryReadReturnsWhatTheMapSays) {
    out({{0x5D, 0}, {0x70, 0x77}, {0x71, 0x78}, {0xE4, 0x79}, {0xE6, 0x7A}});
    const writes values = {{0x20, 0x12}, {0x21, 0x34}, {0x30, 0xD3}, {0x31, 0xEB}, {0x40, 0xA6},
                           {0x5C, 0xFA}, {0x70, 0x77}, {0x71, 0x78}, {0xE4, 0x79}, {0xE6, 0x7A}};
    int expected[0x100];
    std::fill(std::begin(expected), std::end(expected), 0xFF);
    for (const auto &[port, value] : values) expected[port] = value;
    for (uint8_t row = 0; row < key_rows; ++row) expected[row] = machine.key_matrix[row] = 0xA0 + row;
    const auto before = snapshot();
    before->sys_status = 0xA7;
    for (int port = 0; port < 0x100; ++port)
        EXPECT_EQ(in(0xC300 + port), expected[port]) << "IN 0x" << std::hex << port;
    EXPECT_EQ(calls, "usart data; usart status; status; ");
    EXPECT_EQ(std::memcmp(&machine, before.get(), sizeof machine), 0) << "a read changed the machine";

    machine.boot_rom = uint8_t{0};
    EXPECT_EQ(in(0x30), 0xD2);
    for (const int select : {0x01, 0x7F, 0x80, 0xFE}) {
        out(0x71, select);
        EXPECT_EQ(in(0x71), select);
    }
    out(0x71, 0x00);
    EXPECT_EQ(in(0x71), 0xFF);
    EXPECT_EQ(machine.port71, 0xFF) << "a select of 0 turns into none when it is read";
}

} // namespace
