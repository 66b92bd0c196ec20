// All three threads on the headless host: a program that draws, beeps and takes interrupts, while the window
// thread pauses, resets, rebuilds the display and changes what it may change at any time. For ThreadSanitizer
// as much as for the assertions. KIV_STRESS sets the number of actions (default 300).
#include "cpu/z80_thread.h"
#include "platform/clock.h"
#include "tests/presentation/presentation_fixture.h"
#include <cstdlib>
#include <random>

namespace {

constexpr uint8_t program[] = {
    0xF3, 0x31, 0x00, 0xF0,                         //       DI; LD SP,F000
    0xED, 0x5E, 0x3E, 0x01, 0xED, 0x47,             //       IM 2; LD A,1; LD I,A
    0x3E, 0x07, 0xD3, 0xE4, 0x3E, 0x03, 0xD3, 0xE6, //       every level, both sources
    0x21, 0xC8, 0xF3,                               //       LD HL,F3C8: text VRAM
    0xFB, 0x34, 0x2C, 0x20, 0xFB,                   // loop: EI; INC (HL); INC L; JR NZ,loop
    0x24, 0x20, 0xF8, 0x26, 0xF3,                   //       INC H; JR NZ,loop; LD H,F3
    0xD3, 0x5C, 0x32, 0x00, 0xC0, 0xD3, 0x5F,       //       a byte into plane 0
    0xED, 0x5F, 0xE6, 0x28,                         //       LD A,R; AND 28: beeper and motor bits
    0xD3, 0x40, 0xD3, 0x0C, 0xD3, 0x54, 0x18, 0xE7, //       beeper, tone, colour; JR loop
};
constexpr uint8_t interrupt_entries[] = {0x00, 0x02, 0x00, 0x02, 0x00, 0x02};
constexpr uint8_t interrupt_routine[] = {0xFB, 0xC9}; // EI; RET

struct quick_thread : z80_thread {
    quick_thread() { start_delay_ms = 0; }
};

platform::critical_section video_section;

void load_program() {
    std::copy(std::begin(program), std::end(program), machine.main_rom);
    std::copy(std::begin(interrupt_entries), std::end(interrupt_entries), machine.main_rom + 0x100);
    std::copy(std::begin(interrupt_routine), std::end(interrupt_routine), machine.main_rom + 0x200);
}

// The text screen of a machine whose own program has set it up.
void text_screen_on() {
    constexpr uint8_t screen[] = {0xCE, 0x98, 0x6F, 0x58, 0x53}, address[] = {0xC8, 0xF3},
                      count[] = {0xB7, 0x8B};
    machine.crtc_command(0x00);
    for (const uint8_t byte : screen) machine.crtc_parameter(byte);
    machine.crtc_command(0x20);
    for (const uint8_t byte : address) machine.dma_address(2, byte);
    for (const uint8_t byte : count) machine.dma_count(2, byte);
    machine.dma_mode(0xE4);
}

class ThreeThreads : public presentation_test {
  protected:
    void post(uint32_t, uint64_t, uint64_t) override { ++aborts; }
    std::atomic<int> aborts{0};
};

TEST_F(ThreeThreads, SurviveEverythingThatAPersonCanDo) {
    const char *set = std::getenv("KIV_STRESS");
    const int actions = set == nullptr ? 300 : std::max(1, std::atoi(set));
    platform::set_current_thread_affinity(1);
    host.sound.set_record_limit(1000);
    host_callbacks_listen(directx_host_callbacks());
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    machine_init(
        machine, [] { video_section.enter(); }, [] { video_section.leave(); });
    load_program();
    auto cpu = std::make_unique<quick_thread>();
    const auto sync = platform::event::create("SYNC"), ack = platform::event::create("ACK");
    ASSERT_EQ(cpu->init(), 1);
    ASSERT_EQ(init(), 1);
    directx->setSoftVolume(1);
    directx->restore_surfaces();
    text_screen_on();
    ASSERT_EQ(cpu->create_thread(1), 1);
    cpu->resume_thread();

    std::mt19937 generator(88);
    const auto random = [&](uint32_t below) { return static_cast<uint32_t>(generator()) % below; };
    uint32_t longest_pause = 0, screens = 0;
    const auto parked = [&](auto act) {
        const uint32_t before = platform::millisecond_clock();
        ASSERT_EQ(cpu->pause(), 1);
        longest_pause = std::max(longest_pause, platform::millisecond_clock() - before);
        act();
        cpu->resume_run();
    };
    const auto parked_and_silent = [&](auto act) {
        parked([&] {
            directx->stop();
            act();
        });
        directx->play();
    };
    for (int n = 0; n < actions; ++n) {
        switch (random(9)) {
        case 0: parked([] {}); break;
        case 1: parked_and_silent([] {}); break;
        case 2:
            parked_and_silent([&] {
                directx->clearPCM();
                directx->setSoundOff(0);
                machine.reset_keyboard(machine);
                machine.machine_reset(machine);
                text_screen_on();
                cpu->reset_cpu();
            });
            break;
        case 3:
            parked_and_silent([&] { ASSERT_EQ(directx->toggle_screen(), 1); });
            ++screens;
            break;
        case 4: directx->toggle_status(); break;
        case 5: directx->toggleSound(); break;
        case 6: machine.pcg_glyphs_on = machine.pcg_glyphs_on == 0; break;
        case 7: directx->on_move(); break;
        case 8: cpu->set_no_wait(random(2)); break;
        }
        host.pump();
        if (HasFatalFailure()) break;
        platform::sleep_ms(random(6));
    }
    EXPECT_TRUE(host.screen.wait_for_frame(host.screen.shown().number + 2, 5000)) << "frames go on";
    EXPECT_GT(host.sound.unlocks(), 1u);
    EXPECT_EQ(aborts, 0) << "at " << std::hex << main_cpu.trace_pc;
    EXPECT_LT(longest_pause, 2500u); // a lost wake-up takes 5000
    std::printf("%d actions, %u screen changes, %llu frames shown, longest pause %u ms\n", actions, screens,
                static_cast<unsigned long long>(host.screen.shown().number), longest_pause);

    // As the program ends: first the picture and the sound, then the threads.
    ASSERT_EQ(cpu->pause(), 1);
    directx->stop();
    cpu->request_stop();
    cpu->resume_run();
    cpu->stop();
    EXPECT_EQ(cpu->is_running(), 0u);
    directx->release();
}

} // namespace
