// The host that the program's tests run on: what those tests take for granted. Its keys, dialogs, lost
// surfaces and faults on demand are tested by those tests.
#include "tests/headless/headless_host.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

using namespace platform;

namespace {

// Notes what it hears and closes as the program does.
class listener : public window_listener {
  public:
    explicit listener(headless_host &on) : host(on) {}
    int64_t window_proc(host_window &, const message &m, bool &handled) override {
        heard.push_back(m);
        if (m.id == wm_destroy) host.post_quit(7);
        if (m.id == wm_query_end_session) return 1;
        handled = m.id != wm_close;
        return 0;
    }
    bool is_command_key(uint32_t) const override { return false; }
    bool is_key_down(uint32_t) const override { return false; }
    void dropped(const std::string &) override {}
    std::vector<platform::menu_item> menus() const override { return {}; }
    std::vector<uint64_t> wparams(uint32_t id) const {
        std::vector<uint64_t> found;
        for (const message &m : heard)
            if (m.id == id) found.push_back(m.wparam);
        return found;
    }
    headless_host &host;
    std::vector<message> heard;
};

class HeadlessHost : public testing::Test {
  protected:
    HeadlessHost()
        : window(*static_cast<headless_window *>(host.create_window({"Kiv", 0, 0, 640, 400}, hears))) {}
    headless_host host;
    listener hears{host};
    headless_window &window;
};

} // namespace

TEST_F(HeadlessHost, MessagesOfAllThreadsArriveInOrderUntilTheWindowIsGone) {
    std::vector<std::thread> posters;
    for (uint32_t n = 1; n <= 3; n++)
        posters.emplace_back([&, n] {
            for (uint64_t i = 0; i < 300; i++) window.post(wm_private + n, i, 0);
        });
    std::thread person([&] {
        for (auto &p : posters) p.join();
        size_t seen = 0;
        EXPECT_TRUE(host.run_on_window_thread([&] { seen = hears.wparams(wm_private + 1).size(); }));
        EXPECT_EQ(seen, 300u);
        window.end_session();
        window.close_box();
        window.post(wm_private + 9, 0, 0); // after the close: the window is gone
    });
    EXPECT_EQ(host.run_message_loop(), 7);
    person.join();
    for (uint32_t n = 1; n <= 3; n++) {
        const auto got = hears.wparams(wm_private + n);
        ASSERT_EQ(got.size(), 300u);
        EXPECT_TRUE(std::is_sorted(got.begin(), got.end()));
    }
    EXPECT_EQ(hears.wparams(wm_private + 9).size(), 0u);
    EXPECT_EQ(window.end_session_answer, 1);
    EXPECT_TRUE(window.state().gone);
    EXPECT_FALSE(host.run_on_window_thread([] {}, 1)) << "no loop runs any more";
}

TEST_F(HeadlessHost, SoundCursorsMoveWithTheClockAndWhatTheyPassIsHeard) {
    headless_sound &device = host.sound;
    device.use_manual_clock();
    device.set_record_limit(10'000);
    device.open();
    const auto stream = device.create_stream(7680, {1, 96000, 16});
    ASSERT_TRUE(stream);
    const auto put = [&](uint32_t offset, uint32_t bytes, int16_t value) {
        void *p1, *p2;
        uint32_t n1, n2;
        ASSERT_TRUE(stream->lock(offset, bytes, p1, n1, p2, n2));
        EXPECT_FALSE(stream->lock(0, 2, p1, n1, p2, n2)) << "locked already";
        ASSERT_EQ(n1 + n2, bytes);
        std::fill_n(static_cast<int16_t *>(p1), n1 / 2, value);
        if (p2 != nullptr) std::fill_n(static_cast<int16_t *>(p2), n2 / 2, value);
        stream->unlock(p1, n1, p2, n2);
    };
    const auto cursor_after = [&](uint64_t microseconds) {
        uint32_t play = 0, write = 0;
        device.advance(microseconds);
        EXPECT_TRUE(stream->get_position(play, write));
        EXPECT_EQ(write, (play + (device.is_playing() ? 100u : 0u)) % 7680);
        return play;
    };
    device.set_write_lead(100);
    put(0, 3840, 1);
    EXPECT_EQ(cursor_after(5'000), 0u) << "stopped";
    stream->play();
    EXPECT_EQ(cursor_after(20'000), 3840u);
    put(3840 + 1920, 3840, 2); // wraps
    EXPECT_EQ(cursor_after(25'000), 960u);
    stream->stop();
    EXPECT_EQ(cursor_after(1'000'000), 960u);
    stream->play();
    EXPECT_EQ(cursor_after(uint64_t{3600} * 1'000'000 * 30), 960u) << "30 hours: whole rounds";

    const std::vector<int16_t> heard = device.heard();
    ASSERT_EQ(heard.size(), 10'000u);
    const int16_t expected[] = {1, 1, 0, 2, 2, 1}; // of each 960 samples
    for (size_t i = 0; i < 5760; i++) ASSERT_EQ(heard[i], expected[i / 960]) << "sample " << i;
    EXPECT_EQ(device.written().size(), 3840u);
}
