// What a person sees and hears of the machine: the composed frame on the host's screen, in a window or full
// screen, with the speed line, and the rendered slices in the host's looping sound buffer. One class in two
// files: the picture in display/kiv_directx.cpp, the sound in sound/kiv_directx.cpp.
//
// There is one object in the program; it announces itself, so that the render thread, the CPU thread and the
// machine's sound slots find it. Each operation names its thread; without a word it is the window thread.
#pragma once

#include "machine/host_callbacks.h"
#include "platform/host.h"
#include "platform/pixel_memory.h"
#include "sound/sound_slices.h"
#include "support/shared.h"
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// The streaming buffer: two halves of one slice each.
constexpr uint32_t stream_half_bytes = slice_bytes;
constexpr uint32_t stream_bytes = 2 * stream_half_bytes;

// Whoever wants what is made, besides the host: recordings.
class output_tap {
  public:
    virtual ~output_tap() = default;
    // CPU thread, or the window thread while that is parked: a slice, whatever the sound's switch, volumes
    // and speed say. Must not wait.
    virtual void samples(const int16_t *samples, size_t count) = 0;
    // Render thread: 640 x 400 pixels of 0x00RRGGBB, rows top first and `pitch` pixels apart, without the
    // speed line.
    virtual void frame(const uint32_t *pixels, uint32_t pitch) = 0;
};

class kiv_directx {
  public:
    explicit kiv_directx(platform::host &host);
    // Only after the CPU thread has ended. The render thread may still run; it gets no more frames drawn.
    virtual ~kiv_directx();
    kiv_directx(const kiv_directx &) = delete;
    kiv_directx &operator=(const kiv_directx &) = delete;

    // Display and sound set up; 1, or 0 and everything released. After machine_init.
    virtual int init(platform::host_window &window, uint32_t use_videomem);
    // Between window and full screen: releases the display and sets it up again. 0: it is released.
    virtual int toggle_screen();
    virtual void release();
    virtual void restore_surfaces();
    // Render thread: composes one frame into the off-screen surface. The text rows drawn, 25 or 0.
    virtual uint32_t realizer();
    // CPU thread: `look` gets a function that makes the machine's picture as it is then; the next frame shows
    // it in place of a later one. Nobody else composes meanwhile.
    template <class Look> void compose_ahead(Look look) {
        const std::lock_guard lock(composer_mutex);
        if (!ahead_pixels.empty()) look([this] { put_ahead(); });
    }
    // Window thread, the CPU thread being parked: the machine's picture, a quarter as wide and as high, as
    // 0x00RRGGBB. Empty: there is no screen.
    static constexpr int small_width = 160, small_height = 100;
    std::vector<uint32_t> small_picture();
    // Render thread: realizer, then the copy to the screen. 0 also when the frame did not reach the screen.
    virtual uint32_t frame();
    // Render thread. 0: the host could not wait.
    virtual int wait_vblank(); // only where the setting asks for it, else 1 at once
    virtual int wait_vblank_end();

    // CPU thread, or the window thread while that is parked.
    virtual void beepOn();
    virtual void beepOff();
    virtual void setTone(uint32_t frequency, uint32_t tone);
    virtual void muteTones();
    virtual void clearPCM();
    virtual void advanceClock(uint64_t cycles);
    // Window or CPU thread: the streaming buffer runs or stands.
    virtual void play();
    virtual void stop();
    virtual void reset_cpu_clk();
    // CPU thread: the speed, in per cent, at which slices come from now on.
    void set_sound_speed(uint32_t percent);

    // The client area has moved: where window mode copies to. From within set_window_style, too.
    virtual void on_move();

    // CPU thread: closes the slice, renders it and hands it to the streaming buffer.
    virtual void tickPCM();
    // The same for a slice that nobody is to hear; recordings get it.
    const int16_t *next_slice();
    // Decibels. What is read is one above what was set, as devices report it.
    virtual int32_t getHardVolume() const;
    virtual void setHardVolume(int32_t decibels);
    virtual int32_t getSoftVolume() const;
    virtual void setSoftVolume(int32_t n);

    virtual uint32_t get_sync_vblank() const;
    virtual void set_sync_vblank(uint32_t on);
    virtual uint32_t isSoundOff() const;
    virtual void setSoundOff(uint32_t off);
    virtual void toggleSound();
    virtual void toggle_status(); // the speed line
    virtual uint32_t is_full_screen() const;
    virtual void set_full_screen(uint32_t on);
    virtual uint16_t get_screensize() const;
    virtual void set_screensize(uint16_t only_720x480);
    virtual uint32_t get_palette_mode() const;
    virtual void set_palette_mode(uint32_t mode);
    virtual uint32_t get_txt_on_demand() const;
    virtual void set_txt_on_demand(uint32_t value); // stored only

    // CPU thread: the steps of tickPCM.
    virtual void appendPCMTick(uint32_t channel, uint32_t level, uint32_t param);
    virtual void advanceTick(uint32_t channel, uint64_t cycles);
    virtual slice_source closeBanks();
    virtual const int16_t *makePCM(slice_source source);
    virtual void makeNormalPCM(slice_source source);
    virtual void transferPCM(const int16_t *samples); // one slice

    // The sound's state, for snapshots: while the CPU thread is parked.
    sound_block &sound_state() { return slices.record(); }
    sound_slices &sound() { return slices; } // for who drives the machine in the CPU thread's place
    // Window thread; null: nobody. After the call the one before is not called any more.
    void set_tap(output_tap *listens);
    // Window thread, the CPU thread being parked: the text screen as UTF-8, empty while it is off.
    std::string screen_text();
    // Any thread: frames composed since the start.
    uint64_t frames_drawn() const { return drawn; }

    // The object, or null. Not for the render thread, which may outlive it.
    static kiv_directx *instance();
    // Render thread: `frame` of the object, or 0 when there is none any more.
    static uint32_t present_frame();

  private:
    bool video_start();
    bool video_start_full_screen();
    bool directdraw_setup(int mode_width, int mode_height, int depth);
    bool create_surfaces();
    bool create_surfaces_full_screen();
    bool create_surfaces_window();
    bool describe_offscreen();
    void release_surfaces();
    void video_release();
    uint32_t compose_locked();
    uint32_t put_picture(void *pixels);
    void put_ahead();
    bool lock_offscreen(void *&pixels);
    bool copy_to_screen();
    void draw_overlay(void *pixels);
    void give_frame(const void *pixels);

    bool sound_start();
    bool sound_set_up();
    void sound_release();
    bool write_slice(uint32_t offset, uint32_t bytes, const int16_t *samples);

    platform::host &host;
    std::mutex sound_tap_mutex, picture_tap_mutex; // two, so that neither thread waits for the other
    output_tap *sound_tap = nullptr, *picture_tap = nullptr;
    platform::host_window *window = nullptr;
    uint32_t use_videomem = 0; // stored only
    // Picture.
    std::mutex surfaces_mutex; // render thread's frames against the window thread's rebuilds
    std::mutex composer_mutex; // the composer's own memory, and the picture that was made ahead
    platform::pixel_memory ahead_pixels;
    uint32_t ahead_rows = 0;
    bool ahead_waits = false;
    int width = 0, height = 0; // of the mode, then of the off-screen surface
    std::atomic<uint64_t> drawn{0};
    std::atomic<int32_t> overlay_mode{0};
    shared<uint32_t> palette_mode{1};
    uint32_t pixel_format = 0; // pixel_size of the off-screen surface
    shared<uint32_t> full_screen{0};
    shared<uint16_t> screensize{0};
    shared<uint32_t> txt_on_demand{0};
    shared<uint32_t> sync_vblank{0};
    std::unique_ptr<platform::surface> primary, offscreen;
    shared<platform::point> destination{}; // window mode: the client area's corner on the screen
    // Sound.
    bool sound_open = false;
    std::unique_ptr<platform::primary_sound_buffer> primary_buffer;
    std::unique_ptr<platform::sound_stream> stream;
    shared<uint32_t> sound_off{0};
    sound_slices slices;
};

// The machine's sound slots, forwarded to the one kiv_directx object. The object must live while the machine
// runs with them.
sound_listener directx_host_callbacks();
