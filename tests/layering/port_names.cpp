// The firmware's names of ports and of the interrupts' masks stand for what the machine's do.
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <regex>
#include <string>

namespace {

// Every NAME and number that the pattern finds in a file, the names in capitals.
std::map<std::string, int> numbers_in(const std::string &file, const std::string &pattern) {
    std::ifstream in(std::string(KIV_SOURCE_DIR "/") + file);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    const std::regex name_and_number(pattern, std::regex::ECMAScript | std::regex::multiline);
    std::map<std::string, int> numbers;
    for (std::sregex_iterator m(text.begin(), text.end(), name_and_number), end; m != end; ++m) {
        std::string name = (*m)[1];
        std::transform(name.begin(), name.end(), name.begin(), [](char c) { return std::toupper(c); });
        numbers[name] = std::stoi((*m)[2], nullptr, 16);
    }
    return numbers;
}

TEST(PortNames, AreTheSameForMachineAndFirmware) {
    auto firmware = numbers_in("firmware/include/ports.inc", "^(\\w+) +EQU +([0-9A-F]+)h");
    auto machine =
        numbers_in("machine/system_ports.h", "^    ((?!port|plane|status_)\\w+|status) = 0x(\\w\\w)");
    machine.merge(numbers_in("machine/interrupt_controller.h", "^    (mask_\\w+) = 0x(\\w\\w)"));
    EXPECT_GE(machine.size(), 30u) << "lines that the pattern does not know";
    for (const auto &[name, number] : machine) {
        ASSERT_TRUE(firmware.contains(name)) << name;
        EXPECT_EQ(firmware[name], number) << name;
    }
}

} // namespace
