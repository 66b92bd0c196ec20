// The port map: every port with every value does what its line says and nothing else.
#include "machine_fixture.h"

#include <cstdio>

namespace {

std::string calls; // device operations reached by the last access, in order

void call(const char *name, int a = -1, int b = -1) {
    char line[64];
    std::snprintf(line, sizeof line,
                  a < 0   ? "%s "
                  : b < 0 ? "%s(%02X) "
                          : "%s(%02X,%02X) ",
                  name, static_cast<unsigned>(a), static_cast<unsigned>(b));
    calls += line;
}

std::string called(const char *name, int a = -1, int b = -1) {
    calls.clear();
    call(name, a, b);
    return std::exchange(calls, {});
}

// Every device operation that a port reaches only reports itself.
void listen_to_devices() {
    machine.pcg_port = [](uint8_t port, uint8_t value) { call("pcg", port, value); };
    machine.usart_data_write = [](uint8_t value) { call("usart_data_write", value); };
    machine.usart_command_write = [] { call("usart_command", machine.port21); };
    machine.usart_data_read = [] {
        call("usart_data_read");
        return uint8_t{0x12};
    };
    machine.usart_status_read = [] {
        call("usart_status_read");
        return uint8_t{0x34};
    };
    machine.crtc_control = [](uint8_t value) { call("crtc_control", value, machine.port30); };
    machine.crtc_parameter = [](uint8_t value) { call("crtc_parameter", value); };
    machine.crtc_command = [](uint8_t value) { call("crtc_command", value); };
    machine.cassette_port30 = [] { call("cassette_port30", machine.port30); };
    machine.cassette_fast_load = [](uint8_t value) { call("fast_load", value); };
    machine.calendar_port40 = [] { call("calendar", machine.port40); };
    machine.beep_on = [] { call("beep_on"); };
    machine.beep_off = [] { call("beep_off"); };
    machine.dma_address = [](uint8_t channel, uint8_t value) { call("dma_address", channel, value); };
    machine.dma_count = [](uint8_t channel, uint8_t value) { call("dma_count", channel, value); };
    machine.dma_mode = [](uint8_t value) { call("dma_mode", value); };
    machine.sys_status_read = [] {
        call("sys_status_read");
        machine.sys_status = 0xA5;
    };
}

// The port map for writes, a second time: the calls, and the changed fields in `m`.
std::string expected_write(kiv_machine &m, int port, uint8_t value) {
    const auto is = [port](int first, int last) { return first <= port && port <= last; };
    if (is(0x00, 0x0F)) return called("pcg", port, value);
    if (is(0x10, 0x1F)) m.port10 = value;
    if (is(0x20, 0x2F) && port % 2 == 0) return called("usart_data_write", value);
    if (is(0x20, 0x2F)) return m.port21 = value, called("usart_command", value);
    if (is(0x30, 0x30))
        return m.port30 = value, called("crtc_control", value, value) + called("cassette_port30", value);
    if (is(0x31, 0x3F)) m.port31 = value;
    if (is(0x40, 0x40))
        return m.port40 = value,
               called("calendar", value) + called(value / 0x20 % 2 ? "beep_on" : "beep_off");
    if (is(0x50, 0x50)) return called("crtc_parameter", value);
    if (is(0x51, 0x51)) return called("crtc_command", value);
    if (is(0x53, 0x53)) m.crtc_status = static_cast<uint8_t>(m.crtc_status / 2 * 2 + value % 2);
    if (is(0x54, 0x5B)) m.palette[port - 0x54] = static_cast<uint8_t>(value % 8);
    if (is(0x5C, 0x5F)) m.gvram_select = uint8_t("\xF9\xFA\xFC\xF8"[port - 0x5C]);
    if (is(0x60, 0x67)) return called(port % 2 ? "dma_count" : "dma_address", (port - 0x60) / 2, value);
    if (is(0x68, 0x68)) return called("dma_mode", value);
    if (is(0x70, 0x70)) m.port70 = value;
    if (is(0x71, 0x71)) m.port71 = value;
    if (is(0x78, 0x78)) m.port70 = static_cast<uint8_t>((m.port70 + 1) % 256);
    if (is(0xE4, 0xE4)) m.portE4 = value;
    if (is(0xE6, 0xE6)) m.portE6 = value;
    if (is(0xF0, 0xF0)) return called("fast_load", value);
    return {};
}

using SystemPorts = Machine;

TEST_F(SystemPorts, EveryWriteDoesWhatTheMapSays) {
    listen_to_devices();
    const auto expected = snapshot();
    for (int port = 0; port < 0x100; ++port) {
        for (int value = 0; value < 0x100; ++value) {
            const std::string expected_calls = expected_write(*expected, port, static_cast<uint8_t>(value));
            calls.clear();
            out(value * 0x100 + port, value); // the upper address byte counts for nothing
            ASSERT_EQ(calls, expected_calls) << "OUT " << hex{unsigned(port)} << ", " << hex{unsigned(value)};
            ASSERT_EQ(std::memcmp(device_state(machine), device_state(*expected), device_state_size()), 0)
                << "OUT " << hex{unsigned(port)} << ", " << hex{unsigned(value)} << " changes another field";
        }
    }
    EXPECT_EQ(std::memcmp(&machine, expected.get(), sizeof machine), 0);
}

TEST_F(SystemPorts, EveryReadReturnsWhatTheMapSays) {
    listen_to_devices();
    for (int row = 0; row < key_rows; ++row) machine.key_matrix[row] = static_cast<uint8_t>(0xA0 + row);
    const struct {
        int port, value;
    } latches[] = {{0x5D, 0}, {0x70, 0x77}, {0x71, 0x78}, {0xE4, 0x79}, {0xE6, 0x7A}};
    for (const auto &latch : latches) out(latch.port, latch.value);
    const auto before = snapshot();
    before->sys_status = 0xA5;
    for (int port = 0; port < 0x100; ++port) {
        int expected = 0xFF;
        std::string expected_calls;
        switch (port) {
        case 0x20:
            expected = 0x12;
            expected_calls = "usart_data_read ";
            break;
        case 0x21:
            expected = 0x34;
            expected_calls = "usart_status_read ";
            break;
        case 0x30: expected = 0xD3; break;
        case 0x31: expected = 0xEB; break;
        case 0x40:
            expected = 0xA4;
            expected_calls = "sys_status_read ";
            break;
        case 0x5C: expected = 0xFA; break;
        case 0x70: expected = 0x77; break;
        case 0x71: expected = 0x78; break;
        case 0xE4: expected = 0x79; break;
        case 0xE6: expected = 0x7A; break;
        default:
            if (port < key_rows) expected = 0xA0 + port;
        }
        calls.clear();
        EXPECT_EQ(in(0xC300 + port), expected) << "IN " << hex{unsigned(port)};
        EXPECT_EQ(calls, expected_calls) << "IN " << hex{unsigned(port)};
    }
    EXPECT_EQ(std::memcmp(&machine, before.get(), sizeof machine), 0) << "a read changed the machine";
}

// Reads that depend on what was set before.
TEST_F(SystemPorts, DipSwitchAndExpansionSelect) {
    machine.boot_rom = uint8_t{0};
    EXPECT_EQ(in(0x30), 0xD2);
    machine.ext_rom[0] = 0x42;
    out(0x71, 0x00);
    EXPECT_EQ(peek(0x6000), 0x42);
    EXPECT_EQ(in(0x71), 0xFF); // a select of 0 turns into none when it is read
    EXPECT_EQ(peek(0x6000), 0x00);
}

} // namespace
