#include "tools/kiv_run_json.h"

#include "tools/kiv_run_options.h"

#ifndef KIV_HAS_JSON

void answer_requests(run_bench &) { throw run_failure("--json: this kiv-run was built without it"); }

#else

#include "api/kiv.h"
#include "platform/clock.h"
#include "tools/kiv_run_bench.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

// What is wrong with a request.
struct bad_request {
    int32_t code;
    std::string text;
};

[[noreturn]] void bad(const std::string &text) { throw bad_request{KIV_ERROR_ARGUMENT, text}; }

// ---- bytes as base64 ---------------------------------------------------------------------------------

constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string base64(const void *data, size_t size) {
    const auto *const bytes = static_cast<const uint8_t *>(data);
    std::string text;
    text.reserve((size + 2) / 3 * 4);
    for (size_t i = 0; i < size; i += 3) {
        uint32_t three = 0;
        for (size_t k = 0; k < 3; ++k) three = three << 8 | (i + k < size ? bytes[i + k] : 0u);
        for (size_t k = 0; k < 4; ++k) text += i + k <= size ? digits[three >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

std::vector<uint8_t> bytes_of(const std::string &text) {
    std::vector<uint8_t> bytes;
    const size_t end = std::min(text.find('='), text.size());
    if (text.size() % 4 != 0 || text.size() - end > 2) bad("no base64");
    uint32_t bits = 0;
    int count = 0;
    for (size_t i = 0; i < end; ++i) {
        const char *const digit = std::find(digits, digits + 64, text[i]);
        if (digit == digits + 64) bad("no base64");
        bits = bits << 6 | static_cast<uint32_t>(digit - digits);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes.push_back(static_cast<uint8_t>(bits >> count));
    }
    return bytes;
}

// ---- a call's arguments ------------------------------------------------------------------------------

class arguments {
  public:
    explicit arguments(const json &list_) : list(list_) {}
    template <class T> T number(size_t index) const {
        const json &value = at(index);
        if (value.is_boolean()) return static_cast<T>(value.get<bool>());
        if (!value.is_number_integer())
            bad("argument " + std::to_string(index + 1) + ": a whole number is wanted");
        const int64_t n = value.is_number_unsigned() && value.get<uint64_t>() > INT64_MAX
                              ? std::numeric_limits<int64_t>::max()
                              : value.get<int64_t>();
        if (!std::in_range<T>(n)) bad("argument " + std::to_string(index + 1) + " is out of its range");
        return static_cast<T>(n);
    }
    double real(size_t index) const {
        if (!at(index).is_number()) bad("argument " + std::to_string(index + 1) + ": a number is wanted");
        return at(index).get<double>();
    }
    std::string text(size_t index) const {
        if (!at(index).is_string()) bad("argument " + std::to_string(index + 1) + ": a text is wanted");
        return at(index).get<std::string>();
    }
    std::vector<uint8_t> bytes(size_t index) const { return bytes_of(text(index)); }
    size_t count() const { return list.size(); }

  private:
    const json &at(size_t index) const {
        if (index >= list.size()) bad("argument " + std::to_string(index + 1) + " is missing");
        return list[index];
    }
    const json &list;
};

json good(kiv_result result) {
    if (result != KIV_OK) throw bad_request{result, kiv_error_text()};
    return KIV_OK;
}

kiv_date date_of(const arguments &a) {
    return {a.number<int32_t>(0), a.number<int32_t>(1), a.number<int32_t>(2),
            a.number<int32_t>(3), a.number<int32_t>(4), a.number<int32_t>(5)};
}

void host_date(void *, kiv_date *date) {
    const platform::local_time now = platform::current_local_time();
    *date = {now.year, now.month, now.day, now.hour, now.minute, std::min(now.second, 59)};
}

std::vector<std::string> log_lines;
void take_log(void *, int32_t, const char *text) { log_lines.emplace_back(text); }

std::string some_text(const char *text) { return text != nullptr ? text : ""; }

json picture(const arguments &a, size_t pixel) {
    const size_t pitch = a.count() != 0 ? a.number<size_t>(0) : KIV_WIDTH * pixel;
    if (pitch > size_t{1} << 16) bad("the pitch is too large");
    std::vector<uint32_t> pixels(pitch * KIV_HEIGHT / 4 + 1);
    good(pixel == 1 ? kiv_draw_indexed(reinterpret_cast<uint8_t *>(pixels.data()), pitch)
                    : kiv_draw(pixels.data(), pitch));
    return base64(pixels.data(), pitch * KIV_HEIGHT);
}

json text_screen() {
    std::string text(kiv_text_screen(nullptr, 0), '\0');
    kiv_text_screen(text.data(), text.size() + 1);
    return text;
}

json setting(const arguments &a) {
    int32_t value = 0;
    good(kiv_get_setting(a.text(0).c_str(), &value));
    return value;
}

json read_area(const arguments &a) {
    const auto size = a.number<size_t>(2);
    if (size > 0x10000) bad("that is more than a memory area has");
    std::vector<uint8_t> bytes(size);
    good(kiv_read(a.number<int32_t>(0), a.number<uint32_t>(1), bytes.data(), size));
    return base64(bytes.data(), size);
}

json dump() {
    std::vector<uint8_t> bytes(KIV_DUMP_SIZE);
    return base64(bytes.data(), kiv_dump_save(bytes.data(), bytes.size()));
}

json snapshot(const arguments &a) {
    std::vector<uint8_t> bytes(kiv_snapshot_size(a.number<int32_t>(0)));
    return base64(bytes.data(), kiv_snapshot_save(a.number<int32_t>(0), bytes.data(), bytes.size()));
}

// ---- the calls ---------------------------------------------------------------------------------------

struct call {
    std::function<json(const arguments &)> run;
    bool changes; // the machine: what the debugger's history holds is over
};

#define KIV_NUMBER(name)                                                                                     \
    {                                                                                                        \
#name, {                                                                                             \
            [](const arguments &) -> json { return name(); }, false                                          \
        }                                                                                                    \
    }
#define KIV_DOES(name)                                                                                       \
    {                                                                                                        \
#name, {                                                                                             \
            [](const arguments &) -> json { return name(), KIV_OK; }, true                                   \
        }                                                                                                    \
    }

const std::map<std::string, call> &calls() {
    using A = const arguments &;
    static const std::map<std::string, call> all = {
        KIV_NUMBER(kiv_api_version),
        KIV_NUMBER(kiv_stop_reason),
        KIV_NUMBER(kiv_stop_address),
        KIV_NUMBER(kiv_t_states),
        KIV_NUMBER(kiv_frames),
        KIV_NUMBER(kiv_clock_hz),
        KIV_NUMBER(kiv_frame_t_states),
        KIV_NUMBER(kiv_text_cursor),
        KIV_NUMBER(kiv_sample_count),
        KIV_NUMBER(kiv_resampled_count),
        KIV_NUMBER(kiv_type_waiting),
        KIV_NUMBER(kiv_tape_inserted),
        KIV_NUMBER(kiv_tape_size),
        KIV_NUMBER(kiv_tape_position),
        KIV_NUMBER(kiv_tape_motor),
        KIV_NUMBER(kiv_tape_output_size),
        KIV_DOES(kiv_release_keys),
        KIV_DOES(kiv_type_cancel),
        KIV_DOES(kiv_tape_eject),
        KIV_DOES(kiv_tape_output_clear),
        {"kiv_version", {[](A) -> json { return some_text(kiv_version()); }, false}},
        {"kiv_error_text", {[](A) -> json { return some_text(kiv_error_text()); }, false}},
        {"kiv_rom",
         {[](A a) {
              const auto bytes = a.bytes(1);
              return good(kiv_rom(a.number<int32_t>(0), bytes.data(), bytes.size()));
          },
          false}},
        {"kiv_seed", {[](A a) -> json { return kiv_seed(a.number<uint32_t>(0)), KIV_OK; }, false}},
        {"kiv_calendar_fix",
         {[](A a) {
              const kiv_date d = date_of(a);
              return good(kiv_calendar_fix(&d));
          },
          true}},
        {"kiv_calendar_start",
         {[](A a) {
              const kiv_date d = date_of(a);
              return good(kiv_calendar_start(&d));
          },
          true}},
        {"kiv_calendar_host", {[](A) { return good(kiv_calendar_host(host_date, nullptr)); }, true}},
        {"kiv_log",
         {[](A a) -> json {
              return kiv_log(a.number<int32_t>(0) != 0 ? take_log : nullptr, nullptr), KIV_OK;
          },
          false}},
        {"kiv_set_setting",
         {[](A a) { return good(kiv_set_setting(a.text(0).c_str(), a.number<int32_t>(1))); }, true}},
        {"kiv_get_setting", {setting, false}},
        {"kiv_setting_key",
         {[](A a) -> json {
              const char *const key = kiv_setting_key(a.number<uint32_t>(0));
              return key != nullptr ? json(key) : json();
          },
          false}},
        {"kiv_boot", {[](A) { return good(kiv_boot()); }, true}},
        {"kiv_reset", {[](A) { return good(kiv_reset()); }, true}},
        {"kiv_run_frame", {[](A) -> json { return kiv_run_frame(); }, true}},
        {"kiv_run", {[](A a) -> json { return kiv_run(a.number<uint32_t>(0)); }, true}},
        {"kiv_pixels", {[](A) -> json { return base64(kiv_pixels(), KIV_WIDTH * KIV_HEIGHT * 4); }, false}},
        {"kiv_draw", {[](A a) { return picture(a, 4); }, false}},
        {"kiv_draw_indexed", {[](A a) { return picture(a, 1); }, false}},
        {"kiv_palette",
         {[](A) -> json { return std::vector<uint32_t>(kiv_palette(), kiv_palette() + 256); }, false}},
        {"kiv_text_screen", {[](A) { return text_screen(); }, false}},
        {"kiv_samples", {[](A) -> json { return base64(kiv_samples(), kiv_sample_count() * 2); }, false}},
        {"kiv_set_sample_rate", {[](A a) { return good(kiv_set_sample_rate(a.real(0))); }, false}},
        {"kiv_resampled",
         {[](A) -> json { return base64(kiv_resampled(), kiv_resampled_count() * 2); }, false}},
        {"kiv_key",
         {[](A a) -> json { return kiv_key(a.number<uint32_t>(0), a.number<int32_t>(1)), KIV_OK; }, true}},
        {"kiv_matrix_key",
         {[](A a) {
              return good(kiv_matrix_key(a.number<uint32_t>(0), a.number<uint32_t>(1), a.number<int32_t>(2)));
          },
          true}},
        {"kiv_matrix_row", {[](A a) -> json { return kiv_matrix_row(a.number<uint32_t>(0)); }, false}},
        {"kiv_type", {[](A a) { return good(kiv_type(a.text(0).c_str())); }, true}},
        {"kiv_type_key",
         {[](A a) { return good(kiv_type_key(a.number<uint32_t>(0), a.number<int32_t>(1))); }, true}},
        {"kiv_type_pause", {[](A a) { return good(kiv_type_pause(a.number<uint32_t>(0))); }, true}},
        {"kiv_area_size", {[](A a) -> json { return kiv_area_size(a.number<int32_t>(0)); }, false}},
        {"kiv_peek",
         {[](A a) -> json { return kiv_peek(a.number<int32_t>(0), a.number<uint32_t>(1)); }, false}},
        {"kiv_poke",
         {[](A a) {
              return good(kiv_poke(a.number<int32_t>(0), a.number<uint32_t>(1), a.number<uint8_t>(2)));
          },
          true}},
        {"kiv_read", {read_area, false}},
        {"kiv_write",
         {[](A a) {
              const auto bytes = a.bytes(2);
              return good(kiv_write(a.number<int32_t>(0), a.number<uint32_t>(1), bytes.data(), bytes.size()));
          },
          true}},
        {"kiv_port_peek", {[](A a) -> json { return kiv_port_peek(a.number<uint16_t>(0)); }, false}},
        {"kiv_port_in", {[](A a) -> json { return kiv_port_in(a.number<uint16_t>(0)); }, true}},
        {"kiv_port_out",
         {[](A a) -> json { return kiv_port_out(a.number<uint16_t>(0), a.number<uint8_t>(1)), KIV_OK; },
          true}},
        {"kiv_get_register", {[](A a) -> json { return kiv_get_register(a.number<int32_t>(0)); }, false}},
        {"kiv_set_register",
         {[](A a) { return good(kiv_set_register(a.number<int32_t>(0), a.number<uint32_t>(1))); }, true}},
        {"kiv_tape_insert",
         {[](A a) {
              const auto bytes = a.bytes(0);
              return good(kiv_tape_insert(bytes.data(), bytes.size()));
          },
          true}},
        {"kiv_tape_data",
         {[](A) -> json { return base64(kiv_tape_data(), kiv_tape_data() != nullptr ? kiv_tape_size() : 0); },
          false}},
        {"kiv_tape_seek", {[](A a) { return good(kiv_tape_seek(a.number<size_t>(0))); }, true}},
        {"kiv_tape_record",
         {[](A a) -> json { return kiv_tape_record(a.number<int32_t>(0)), KIV_OK; }, false}},
        {"kiv_tape_output",
         {[](A) -> json { return base64(kiv_tape_output(), kiv_tape_output_size()); }, false}},
        {"kiv_dump_save", {[](A) { return dump(); }, false}},
        {"kiv_dump_load",
         {[](A a) {
              const auto bytes = a.bytes(0);
              return good(kiv_dump_load(bytes.data(), bytes.size()));
          },
          true}},
        {"kiv_snapshot_size", {[](A a) -> json { return kiv_snapshot_size(a.number<int32_t>(0)); }, false}},
        {"kiv_snapshot_limit", {[](A a) -> json { return kiv_snapshot_limit(a.number<int32_t>(0)); }, false}},
        {"kiv_snapshot_save", {snapshot, false}},
        {"kiv_snapshot_load",
         {[](A a) {
              const auto bytes = a.bytes(0);
              return good(kiv_snapshot_load(bytes.data(), bytes.size()));
          },
          true}},
    };
    return all;
}

#undef KIV_NUMBER
#undef KIV_DOES

json answer_to(const json &request, run_bench &bench) {
    if (!request.is_object()) bad("a request is an object");
    if (request.contains("console")) {
        if (!request["console"].is_string()) bad("console: a text is wanted");
        std::vector<std::string> lines;
        const int before = bench.console.failures;
        bench.collected = &lines;
        bench.console.execute(request["console"].get<std::string>());
        bench.collected = nullptr;
        return {{"output", lines}, {"good", bench.console.failures == before}};
    }
    if (!request.contains("call") || !request["call"].is_string()) bad("call or console is wanted");
    const std::string name = request["call"].get<std::string>();
    if (name == "calls") {
        std::vector<std::string> names;
        for (const auto &[n, c] : calls()) names.push_back(n);
        return {{"result", names}};
    }
    const auto found = calls().find(name);
    if (found == calls().end()) bad(name + ": no such call");
    const json none = json::array();
    const json &list = request.contains("args") ? request["args"] : none;
    if (!list.is_array()) bad("args: a list is wanted");
    if (found->second.changes) bench.driver.forget_history();
    return {{"result", found->second.run(arguments(list))}};
}

} // namespace

void answer_requests(run_bench &bench) {
    bench.interactive = true;
    kiv_log(nullptr, nullptr); // the standard output is for answers
    for (std::string line; !bench.console.quit() && std::getline(std::cin, line);) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        json request = json::parse(line, nullptr, false), answer;
        try {
            if (request.is_discarded()) bad("no JSON");
            answer = answer_to(request, bench);
        } catch (const bad_request &wrong) {
            answer = {{"error", wrong.text}, {"code", wrong.code}};
        }
        if (request.is_object() && request.contains("id") && request["id"].is_primitive())
            answer["id"] = request["id"];
        if (!log_lines.empty()) answer["log"] = std::exchange(log_lines, {});
        const std::string text = answer.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
        if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
            throw run_failure("standard output: it is gone");
    }
    bench.exit_code = bench.console.exit_code;
}

#endif
