// A host whose every step can be told to fail, and which notes the steps in order. Display and sound only.
#pragma once

#include "platform/host.h"
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

// Steps are named by their operation, modes and surfaces with their arguments: "set_mode 640x400x8".
struct script {
    std::set<std::string> refused;
    std::vector<std::string> steps;
    bool indexed8 = false, rgb = true;
    int extra_pitch = 0;                                // bytes
    std::vector<platform::display_result> lock_results; // taken from the front, then ok
    std::vector<platform::display_result> copy_results;
    std::function<void()> on_copy = [] {};
    bool foreground = true;
    platform::point origin{100, 50};
    uint32_t write_cursor = 0;

    bool step(const std::string &name) {
        steps.push_back(name);
        return refused.count(name) == 0;
    }
    platform::display_result next(std::vector<platform::display_result> &results) {
        if (results.empty()) return platform::display_result::ok;
        const auto result = results.front();
        results.erase(results.begin());
        return result;
    }
    int count(const std::string &name) const {
        int n = 0;
        for (const auto &s : steps) n += s == name;
        return n;
    }
};

inline std::string size_text(int width, int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

struct scripted_surface : platform::surface {
    scripted_surface(script &s, std::string n, int w, int h)
        : tell(s), name(std::move(n)), width(w), height(h) {
        const int bytes = tell.indexed8 ? 1 : 4;
        pitch = width * bytes + tell.extra_pitch;
        memory.assign(static_cast<size_t>(pitch * height / 4), 0x77777777);
    }
    ~scripted_surface() override { tell.steps.push_back("release " + name); }
    bool describe(platform::surface_desc &desc) override {
        desc = {width, height, pitch, {tell.indexed8, tell.rgb, 0x40u}};
        return tell.step("describe");
    }
    platform::display_result lock(void *&pixels, int &bytes) override {
        pixels = memory.data();
        bytes = pitch;
        return tell.next(tell.lock_results);
    }
    void unlock() override { ++unlocks; }
    bool restore() override { return tell.step("restore " + name); }
    void fill(const platform::rectangle &a, uint32_t colour) override {
        tell.step("fill " + name + " " + size_text(a.right, a.bottom) + " " + std::to_string(colour));
    }
    bool set_palette(const uint32_t *rgb256) override {
        white = rgb256[0xFF];
        return tell.step("set_palette");
    }
    bool set_clip_window(platform::host_window &) override { return tell.step("set_clip_window"); }
    platform::display_result copy_from(platform::surface &, const platform::rectangle &from,
                                       const platform::rectangle &to, bool full_screen) override {
        tell.on_copy();
        tell.step("copy " + size_text(from.right, from.bottom) + " to " + std::to_string(to.left) + "," +
                  std::to_string(to.top) + "-" + std::to_string(to.right) + "," + std::to_string(to.bottom) +
                  (full_screen ? " full" : ""));
        return tell.next(tell.copy_results);
    }
    uint32_t pixel(int x, int y) const {
        const auto *line = reinterpret_cast<const uint8_t *>(memory.data()) + y * pitch;
        if (tell.indexed8) return line[x];
        uint32_t value;
        std::memcpy(&value, line + 4 * x, 4);
        return value;
    }

    script &tell;
    std::string name;
    int width, height, pitch, unlocks = 0;
    uint32_t white = 0;
    std::vector<uint32_t> memory;
};

struct scripted_display : platform::display {
    explicit scripted_display(script &s) : tell(s) {}
    bool open() override { return tell.step("open"); }
    void close() override { tell.step("close"); }
    bool set_cooperative_level(platform::host_window &, bool full_screen) override {
        return tell.step(full_screen ? "cooperative full" : "cooperative window");
    }
    bool set_mode(int w, int h, int depth) override {
        tell.indexed8 = depth == 8;
        return tell.step("set_mode " + size_text(w, h) + "x" + std::to_string(depth));
    }
    void restore_mode() override { tell.step("restore_mode"); }
    bool get_caps() override { return tell.step("get_caps"); }
    std::unique_ptr<platform::surface> create_primary(bool full_screen) override {
        if (!tell.step(full_screen ? "primary full" : "primary window")) return nullptr;
        return std::make_unique<scripted_surface>(tell, "primary", 640, 400);
    }
    std::unique_ptr<platform::surface> create_offscreen(int w, int h,
                                                        platform::surface_memory where) override {
        const bool video = where == platform::surface_memory::video;
        if (!tell.step("offscreen " + size_text(w, h) + (video ? " video" : " system"))) return nullptr;
        auto made = std::make_unique<scripted_surface>(tell, "offscreen", w, h);
        offscreen = made.get();
        return made;
    }
    bool create_clipper() override { return tell.step("create_clipper"); }
    bool create_palette() override { return tell.step("create_palette"); }
    bool wait_vertical_blank(bool begin) override { return tell.step(begin ? "blank begins" : "blank ends"); }

    script &tell;
    scripted_surface *offscreen = nullptr;
};

struct scripted_stream : platform::sound_stream {
    scripted_stream(script &s, uint32_t size) : tell(s), memory(size, 0x55) {}
    bool get_caps(uint32_t &bytes) override {
        bytes = static_cast<uint32_t>(memory.size());
        return tell.step("stream caps");
    }
    bool lock(uint32_t offset, uint32_t bytes, void *&part1, uint32_t &bytes1, void *&part2,
              uint32_t &bytes2) override {
        const uint32_t split = bytes == memory.size() || !split_locks ? bytes : bytes / 3;
        part1 = memory.data() + offset;
        bytes1 = split;
        part2 = split == bytes ? nullptr : memory.data() + offset + split;
        bytes2 = bytes - split;
        return tell.step("stream lock");
    }
    void unlock(void *, uint32_t, void *, uint32_t) override { tell.step("stream unlock"); }
    void play() override { tell.step("play"); }
    void stop() override { tell.step("stop"); }
    bool get_position(uint32_t &play, uint32_t &write) override {
        play = write = tell.write_cursor;
        return tell.step("position");
    }

    script &tell;
    std::vector<uint8_t> memory;
    bool split_locks = false;
};

struct scripted_primary_buffer : platform::primary_sound_buffer {
    explicit scripted_primary_buffer(script &s) : tell(s) {}
    bool get_caps(uint32_t &bytes) override {
        bytes = 4096;
        return tell.step("primary caps");
    }
    bool set_format(const platform::wave_format &f) override {
        return tell.step("set_format") && f.channels == 1 && f.sample_rate == 96000 && f.bits == 16;
    }
    void set_volume(int32_t hundredths) override { volume = hundredths; }
    int32_t get_volume() const override { return volume + 100; }
    script &tell;
    int32_t volume = 0;
};

struct scripted_sound : platform::sound_device {
    explicit scripted_sound(script &s) : tell(s) {}
    bool open() override { return tell.step("sound open"); }
    void close() override { tell.step("sound close"); }
    bool set_cooperative_level(platform::host_window &) override { return tell.step("sound level"); }
    std::unique_ptr<platform::primary_sound_buffer> create_primary() override {
        if (!tell.step("primary buffer")) return nullptr;
        auto made = std::make_unique<scripted_primary_buffer>(tell);
        primary = made.get();
        return made;
    }
    std::unique_ptr<platform::sound_stream> create_stream(uint32_t bytes,
                                                          const platform::wave_format &) override {
        if (!tell.step("stream")) return nullptr;
        auto made = std::make_unique<scripted_stream>(tell, bytes);
        stream = made.get();
        return made;
    }
    script &tell;
    scripted_primary_buffer *primary = nullptr;
    scripted_stream *stream = nullptr;
};

struct scripted_window : platform::host_window {
    explicit scripted_window(script &s) : tell(s) {}
    void post(uint32_t, uint64_t, uint64_t) override {}
    void destroy() override {}
    bool client_size(platform::size2 &) const override { return false; }
    platform::point client_origin() const override { return tell.origin; }
    void invalidate(bool) override {}
    void set_focus() override {}
    bool is_foreground() const override { return tell.foreground; }
    platform::painter *current_painter() override { return nullptr; }
    int show_cursor(bool) override { return 0; }
    bool shift_down() const override { return false; }
    void disable_input_method() override {}
    bool set_framed(bool) override { return true; }
    void resize_client(int, int) override {}
    void centre() override {}
    void show() override {}
    void remove_default_menu_items() override {}
    bool has_menu_item(uint32_t) const override { return false; }
    void insert_menu_item(int, uint32_t, const std::string &) override {}
    script &tell;
};

struct scripted_host : platform::host {
    bool begin() override { return true; }
    void end() override {}
    void begin_timer_resolution(uint32_t) override {}
    void end_timer_resolution(uint32_t) override {}
    bool register_window_class(const std::string &) override { return true; }
    platform::host_window *create_window(const platform::window_options &,
                                         platform::window_listener &) override {
        return &window;
    }
    int run_message_loop() override { return 0; }
    void post_quit(int) override {}
    void error_box(platform::host_window *, const std::string &, const std::string &) override {}
    bool open_file(platform::host_window &, const platform::file_dialog_options &, std::string &) override {
        return false;
    }
    bool save_file(platform::host_window &, const platform::file_dialog_options &, std::string &) override {
        return false;
    }
    bool settings(platform::host_window &, platform::settings_dialog &) override { return false; }
    void help(platform::host_window &, const platform::help_dialog &) override {}
    platform::display &get_display() override { return display; }
    platform::sound_device &get_sound() override { return sound; }

    script tell;
    scripted_window window{tell};
    scripted_display display{tell};
    scripted_sound sound{tell};
};
