#include "debug/disassembler.h"

#include <cstdio>

namespace {

std::string hex(unsigned value, int digits) {
    char text[8];
    std::snprintf(text, sizeof text, "$%0*X", digits, value);
    return text;
}

std::string bytes_as_db(const disassembled &d) {
    std::string text = "DB ";
    for (int i = 0; i < d.length; ++i) {
        if (i != 0) text += ',';
        text += hex(d.bytes[i], 2);
    }
    return text;
}

struct decoder {
    disassembled result{};
    uint16_t address;
    const std::function<uint8_t(uint16_t)> &byte_at;
    const address_names &name_of;
    int8_t displacement = 0;

    uint8_t next() {
        const uint8_t byte = byte_at(static_cast<uint16_t>(address + result.length));
        return result.bytes[result.length++] = byte;
    }
    uint16_t next_word() {
        const unsigned low = next(), high = next();
        return static_cast<uint16_t>(high << 8 | low);
    }
    std::string address_text(uint16_t target) const {
        std::string name = name_of ? name_of(target) : std::string();
        return name.empty() ? hex(target, 4) : name;
    }

    opcode_page page_of(uint8_t first) {
        switch (first) {
        case 0xCB: return opcode_page::cb;
        case 0xED: return opcode_page::ed;
        case 0xDD: return opcode_page::dd;
        case 0xFD: return opcode_page::fd;
        default: return opcode_page::plain;
        }
    }

    const instruction_form &decode() {
        uint8_t opcode = next();
        opcode_page page = page_of(opcode);
        if (page != opcode_page::plain) opcode = next();
        if (opcode == 0xCB && (page == opcode_page::dd || page == opcode_page::fd)) {
            page = page == opcode_page::dd ? opcode_page::ddcb : opcode_page::fdcb;
            displacement = static_cast<int8_t>(next());
            opcode = next();
        }
        const instruction_form &form = instruction_set()[static_cast<size_t>(page)][opcode];
        // In front of an immediate byte, too.
        if ((page == opcode_page::dd || page == opcode_page::fd) &&
            form.text.find("+d)") != std::string::npos)
            displacement = static_cast<int8_t>(next());
        return form;
    }

    // The operand that begins at `at` of the form, which moves behind it.
    std::string operand(const std::string &form, size_t &at) {
        if (form.compare(at, 2, "nn") == 0) {
            at += 2;
            return address_text(next_word());
        }
        if (form.compare(at, 2, "+d") == 0) {
            at += 2;
            std::string text = std::to_string(displacement);
            return displacement < 0 ? text : text.insert(0, 1, '+');
        }
        if (form[at] == 'n') {
            ++at;
            return hex(next(), 2);
        }
        if (form[at] == 'e') {
            ++at;
            const auto offset = static_cast<int8_t>(next());
            return address_text(static_cast<uint16_t>(address + result.length + offset));
        }
        return std::string(1, form[at++]);
    }

    disassembled run() {
        const instruction_form &form = decode();
        std::string text;
        for (size_t at = 0; at < form.text.size();) text += operand(form.text, at);
        result.kind = form.kind;
        const bool assembles =
            form.kind != instruction_kind::undefined && form.kind != instruction_kind::another_form;
        result.text = assembles ? text : bytes_as_db(result);
        if (!assembles) result.note = text.empty() ? "undefined" : text + ", another form";
        if (form.kind == instruction_kind::undocumented) result.note = "undocumented";
        if (form.kind == instruction_kind::unimplemented) result.note = "stops the processor";
        return result;
    }
};

using page_lengths = std::array<std::array<uint8_t, 256>, opcode_pages>;

page_lengths all_lengths() {
    page_lengths lengths{};
    for (size_t page = 0; page < lengths.size(); ++page)
        for (unsigned opcode = 0; opcode < 256; ++opcode) {
            std::string bytes = page_prefix(static_cast<opcode_page>(page));
            if (bytes.size() == 2) bytes += '\0'; // the displacement stands in front of the opcode
            bytes += static_cast<char>(opcode);
            bytes.resize(4);
            const auto byte = [&](uint16_t at) { return static_cast<uint8_t>(bytes[at & 3]); };
            lengths[page][opcode] = disassemble(0, byte).length;
        }
    return lengths;
}

} // namespace

uint8_t instruction_length(const uint8_t bytes[4]) {
    static const page_lengths lengths = all_lengths();
    const auto of = [&](opcode_page page, uint8_t opcode) {
        return lengths[static_cast<size_t>(page)][opcode];
    };
    switch (bytes[0]) {
    case 0xCB: return 2;
    case 0xED: return of(opcode_page::ed, bytes[1]);
    case 0xDD:
    case 0xFD: return bytes[1] == 0xCB ? uint8_t{4} : of(opcode_page::dd, bytes[1]);
    default: return of(opcode_page::plain, bytes[0]);
    }
}

disassembled disassemble(uint16_t address, const std::function<uint8_t(uint16_t)> &byte_at,
                         const address_names &name_of) {
    return decoder{{}, address, byte_at, name_of}.run();
}

flow flow_of(const uint8_t bytes[4]) {
    const uint8_t opcode = bytes[0];
    if (opcode == 0xED) {
        if (bytes[1] == 0x45 || bytes[1] == 0x4D) return flow::returns;
        return (bytes[1] & 0xF4) == 0xB0 ? flow::repeats : flow::on;
    }
    if (opcode == 0xDD || opcode == 0xFD) return bytes[1] == 0xE9 ? flow::jump : flow::on;
    if (opcode == 0x76) return flow::halt;
    if (opcode == 0xCD || (opcode & 0xC7) == 0xC4) return flow::call;
    if ((opcode & 0xC7) == 0xC7) return flow::restart;
    if (opcode == 0xC9 || (opcode & 0xC7) == 0xC0) return flow::returns;
    if (opcode == 0xC3 || opcode == 0xE9 || (opcode & 0xC7) == 0xC2) return flow::jump;
    return opcode == 0x10 || opcode == 0x18 || (opcode & 0xE7) == 0x20 ? flow::jump : flow::on;
}
