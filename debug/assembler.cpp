#include "debug/assembler.h"

#include "debug/debug_error.h"
#include "debug/expression.h"
#include "debug/instruction_set.h"
#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

struct encoding {
    opcode_page page;
    uint8_t opcode;
};

const std::map<std::string, encoding> &encodings() {
    static const std::map<std::string, encoding> all = [] {
        std::map<std::string, encoding> forms;
        for (int page = 0; page < opcode_pages; ++page)
            for (int opcode = 0; opcode < 256; ++opcode) {
                const instruction_form &form =
                    instruction_set()[static_cast<size_t>(page)][static_cast<size_t>(opcode)];
                if (!form.text.empty() && form.kind != instruction_kind::another_form)
                    forms[form.text] = {static_cast<opcode_page>(page), static_cast<uint8_t>(opcode)};
            }
        return forms;
    }();
    return all;
}

std::string trimmed(const std::string &text) {
    const size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string::npos) return {};
    return text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
}

std::string without_blanks_upper(const std::string &text) {
    std::string result;
    for (const char c : text)
        if (!std::isspace(static_cast<unsigned char>(c)))
            result += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return result;
}

// Up to a semicolon, split at `separator`, neither within quotes nor within parentheses. AF' opens no quote.
std::vector<std::string> split(const std::string &text, char separator) {
    std::vector<std::string> parts{""};
    char quote = 0;
    int depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote == 0 && c == ';') break;
        const bool prime = c == '\'' && i > 0 && std::isalpha(static_cast<unsigned char>(text[i - 1]));
        if (quote != 0)
            quote = c == quote ? char{0} : quote;
        else if (c == '"' || (c == '\'' && !prime))
            quote = c;
        depth += quote == 0 ? (c == '(') - (c == ')') : 0;
        if (c == separator && quote == 0 && depth == 0)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    for (std::string &part : parts) part = trimmed(part);
    return parts;
}

bool in_parentheses(const std::string &text) {
    if (text.size() < 2 || text.front() != '(') return false;
    int depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        depth += (text[i] == '(') - (text[i] == ')');
        if (depth == 0) return i + 1 == text.size();
    }
    return false;
}

// A way to read an operand: the form that it stands for, and the value that fills the form's place.
struct reading {
    std::string form, value;
};

class line_assembler {
  public:
    line_assembler(const std::string &line, uint16_t where, const symbol_table &table)
        : text(line), address(where), symbols(table) {}

    std::vector<uint8_t> run() {
        const std::string code = split(text, '\0')[0];
        const size_t end = std::min(code.find_first_of(" \t"), code.size());
        const std::string mnemonic = without_blanks_upper(code.substr(0, end));
        if (mnemonic.empty()) throw debug_error("an instruction is wanted");
        std::vector<std::string> operands;
        if (const std::string rest = trimmed(code.substr(end)); !rest.empty()) operands = split(rest, ',');
        if (mnemonic == "DB" || mnemonic == "DEFB" || mnemonic == "DW" || mnemonic == "DEFW")
            return data(mnemonic.ends_with("W"), operands);
        apply_habits(mnemonic, operands);
        return instruction(mnemonic, operands);
    }

  private:
    // What people also write: SUB A,B and ADD B; JP HL.
    static void apply_habits(const std::string &mnemonic, std::vector<std::string> &operands) {
        const auto one_of = [&](std::initializer_list<const char *> names) {
            return std::find(names.begin(), names.end(), mnemonic) != names.end();
        };
        if (one_of({"SUB", "AND", "XOR", "OR", "CP"}) && operands.size() == 2 &&
            without_blanks_upper(operands[0]) == "A")
            operands.erase(operands.begin());
        if (one_of({"ADD", "ADC", "SBC"}) && operands.size() == 1) operands.insert(operands.begin(), "A");
        if (mnemonic == "JP" && operands.size() == 1) {
            const std::string target = without_blanks_upper(operands[0]);
            if (target == "HL" || target == "IX" || target == "IY") operands[0] = "(" + target + ")";
        }
    }

    int64_t value_of(const std::string &operand) const { return parse_constant(operand, symbols); }

    // The value within low..high, as so many bytes.
    void put(std::vector<uint8_t> &bytes, int64_t value, int64_t low, int64_t high, int size) const {
        if (value < low || value > high)
            throw debug_error(text + ": " + std::to_string(value) + " is not within " + std::to_string(low) +
                              " and " + std::to_string(high));
        for (int i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
    }

    std::vector<uint8_t> data(bool as_words, const std::vector<std::string> &operands) const {
        std::vector<uint8_t> bytes;
        if (operands.empty()) throw debug_error(text + ": values are missing");
        for (const std::string &o : operands) {
            if (!as_words && o.size() >= 2 && o.front() == '"' && o.back() == '"')
                bytes.insert(bytes.end(), o.begin() + 1, o.end() - 1);
            else if (as_words)
                put(bytes, value_of(o), -32768, 65535, 2);
            else
                put(bytes, value_of(o), -128, 255, 1);
        }
        return bytes;
    }

    std::vector<reading> readings_of(const std::string &operand) const {
        const std::string plain = without_blanks_upper(operand);
        std::vector<reading> readings{{plain, ""}};
        if (plain.starts_with("(IX") || plain.starts_with("(IY")) {
            const std::string inner = trimmed(operand.substr(operand.find_first_of("xXyY") + 1));
            readings.push_back(
                {plain.substr(0, 3) + "+d)", inner == ")" ? "0" : inner.substr(0, inner.size() - 1)});
            return readings;
        }
        if (in_parentheses(operand)) {
            readings.push_back({"(n)", operand});
            readings.push_back({"(nn)", operand});
        }
        for (const char *const place : {"n", "nn", "e"}) readings.push_back({place, operand});
        return readings;
    }

    // BIT, RES, SET, IM and RST have their first operand in the opcode.
    std::string number_in_opcode(const std::string &mnemonic, const std::string &operand) const {
        const int64_t value = value_of(operand);
        if (mnemonic != "RST") return std::to_string(value);
        char hex[24];
        std::snprintf(hex, sizeof hex, "$%02llX", static_cast<unsigned long long>(value));
        return hex;
    }

    std::vector<uint8_t> instruction(const std::string &mnemonic,
                                     const std::vector<std::string> &operands) const {
        std::vector<std::vector<reading>> all;
        all.reserve(operands.size());
        for (const std::string &o : operands) all.push_back(readings_of(o));
        for (const char *const counted : {"BIT", "RES", "SET", "IM", "RST"})
            if (mnemonic == counted && !operands.empty())
                all[0] = {{number_in_opcode(mnemonic, operands[0]), ""}};
        std::vector<std::string> values;
        const encoding *const found = choose(mnemonic, all, 0, values);
        if (found == nullptr) throw debug_error(text + ": no such instruction");
        return encode(*found, values);
    }

    // The first combination of readings that is an instruction.
    const encoding *choose(const std::string &form, const std::vector<std::vector<reading>> &all,
                           size_t index, std::vector<std::string> &values) const {
        if (index == all.size()) {
            const auto found = encodings().find(form);
            return found == encodings().end() ? nullptr : &found->second;
        }
        for (const reading &r : all[index]) {
            if (!r.value.empty()) values.push_back(r.value);
            const encoding *const found =
                choose(form + (index == 0 ? " " : ",") + r.form, all, index + 1, values);
            if (found != nullptr) return found;
            if (!r.value.empty()) values.pop_back();
        }
        return nullptr;
    }

    std::vector<uint8_t> encode(const encoding &e, const std::vector<std::string> &values) const {
        const std::string prefix = page_prefix(e.page);
        const std::string &form = instruction_set()[static_cast<size_t>(e.page)][e.opcode].text;
        std::vector<uint8_t> bytes(prefix.begin(), prefix.end());
        size_t next = 0;
        const bool displaced = form.find("+d") != std::string::npos;
        const bool last = prefix.size() == 2; // behind the displacement
        if (!last) bytes.push_back(e.opcode);
        if (displaced) put(bytes, value_of(values.at(next++)), -128, 127, 1);
        if (last) bytes.push_back(e.opcode);
        if (form.find("nn") != std::string::npos)
            put(bytes, value_of(values.at(next)), -32768, 65535, 2);
        else if (form.find('n') != std::string::npos)
            put(bytes, value_of(values.at(next)), -128, 255, 1);
        else if (form.find('e') != std::string::npos)
            put(bytes, value_of(values.at(next)) - address - 2, -128, 127, 1);
        return bytes;
    }

    const std::string &text;
    uint16_t address;
    const symbol_table &symbols;
};

} // namespace

std::vector<uint8_t> assemble(const std::string &line, uint16_t address, const symbol_table &symbols) {
    return line_assembler(line, address, symbols).run();
}
