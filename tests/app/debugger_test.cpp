// The debugger of the window, and one on a wire.
#include "debug/wire/gdb_packets.h"
#include "platform/wire.h"
#include "tests/app/program_fixture.h"

namespace {

TEST_F(WholeProgram, TheDebuggerStopsStepsGoesBackAndLetsGo) {
    using act = platform::debugger_action;
    constexpr uint8_t begins[] = {0xE5, 0x7A, 0xFE, 0x30}; // the routine for a key that went down
    const auto typed = static_cast<uint16_t>(
        std::search(std::begin(test_rom), std::end(test_rom), std::begin(begins), std::end(begins)) -
        std::begin(test_rom));
    run([&] {
        const auto debugger = [&](const std::function<void(platform::debugger_listener &)> &use) {
            on_window_thread([&] {
                platform::debugger_listener *const d = window().state().debugger;
                ASSERT_NE(d, nullptr);
                use(*d);
            });
        };
        const auto look = [&] {
            platform::debugger_look l;
            debugger([&](auto &d) {
                EXPECT_TRUE(d.debugger_looks({.listing_rows = 20, .stack = true, .points = true}, l));
            });
            return l;
        };
        const auto do_and_stop = [&](const std::function<void()> &what) {
            const int stops = window().state().debugger_stops;
            what();
            wait_until("a stop", [&] { return window().state().debugger_stops == stops + 1; });
            expect_parked(true);
            return look();
        };
        const auto step = [&](act a) {
            return do_and_stop([&] { debugger([&](auto &d) { d.debugger_acts(a, 0); }); });
        };
        const auto acts = [&](act a) { debugger([&](auto &d) { d.debugger_acts(a, 0); }); };
        const auto said = [&](const std::string &line) {
            std::string all;
            debugger([&](auto &d) {
                d.debugger_lines();
                if (!line.empty()) d.debugger_command(line);
                for (const std::string &l : d.debugger_lines()) all += l + "\n";
            });
            return all;
        };
        type('Z', "z");
        use_item(menu_debugger);
        EXPECT_TRUE(look().running);
        wait_until_running();
        expect_parked(false);
        debugger([&](auto &d) {
            d.debugger_toggles_point(typed);
            EXPECT_NE(d.debugger_adds_point("nowhere"), "");
        });

        platform::debugger_look l = do_and_stop([&] { window().press_key('A'); });
        EXPECT_EQ(l.pc, typed);
        EXPECT_EQ(l.why, "ブレークポイント (1)");
        EXPECT_FALSE(l.running);
        EXPECT_EQ(screen_row(1), "z");
        ASSERT_EQ(l.points.size(), 1u);
        EXPECT_EQ(l.points[0].hits, 1u);
        const auto here = std::find_if(l.listing.begin(), l.listing.end(),
                                       [&](const auto &line) { return line.address == typed; });
        ASSERT_NE(here, l.listing.end());
        EXPECT_EQ(here->text, "PUSH HL");
        EXPECT_EQ(here->point, platform::debugger_line::point_on);
        EXPECT_NE(here, l.listing.begin()) << "what leads there is shown, too";
        const uint16_t behind = l.stack[0].value;
        EXPECT_NE(l.stack[0].text, "") << "a return address";

        l = step(act::into);
        EXPECT_EQ(l.pc, typed + 1);
        EXPECT_EQ(l.stack[1].value, behind);
        l = step(act::out);
        EXPECT_EQ(l.pc, behind);
        EXPECT_EQ(screen_row(1), "za");
        window().release_key('A');

        acts(act::back_over); // undone
        EXPECT_EQ(look().pc, behind - 3);
        EXPECT_EQ(screen_row(1), "z");
        EXPECT_EQ(do_and_stop([&] { EXPECT_EQ(said("go"), ""); }).pc, typed);
        debugger([&](auto &d) { // the letter that is shown
            EXPECT_EQ(d.debugger_sets_register(1, 0x1200), "");
            EXPECT_EQ(d.debugger_writes(0, 0xE010 + 11, {0xFF}), "");
        });
        EXPECT_EQ(step(act::out).pc, behind);
        EXPECT_EQ(screen_row(1), "zb");
        EXPECT_NE(said("regs").find("PC="), std::string::npos);
        EXPECT_NE(said("back-go").find("breakpoint (1)"), std::string::npos);
        EXPECT_EQ(look().pc, typed);
        EXPECT_EQ(screen_row(1), "z");

        // What takes long is asked whether it goes on, shows nothing half done, and leaves the machine whole.
        int allowed = 4;
        script.work = [&](double) {
            platform::debugger_look half;
            EXPECT_FALSE(window().state().debugger->debugger_looks({}, half));
            return --allowed > 0;
        };
        host.set_script(script);
        EXPECT_NE(said("repeat 2 until 0").find("interrupted"), std::string::npos);
        EXPECT_EQ(allowed, 0) << "of both";
        const std::string place = look().place;
        allowed = 1;
        EXPECT_NE(said("back-go").find("interrupted"), std::string::npos);
        EXPECT_EQ(look().place, place);
        script.work = nullptr;
        host.set_script(script);
        said("back-go");
        EXPECT_EQ(look().pc, typed);

        // Files that fail are told, here and while the machine runs, and end nothing.
        EXPECT_EQ(said("source ."), ".: cannot be read\n");
        EXPECT_EQ(said("trace /dev/full"), "");
        EXPECT_NE(said("repeat 500 step").find("/dev/full: cannot be written\n"), std::string::npos);
        said("trace off");
        said("back-go");
        EXPECT_EQ(look().pc, typed);

        said("profile on");
        step(act::frame);
        debugger([&](auto &d) {
            l = {};
            EXPECT_TRUE(d.debugger_looks({.profile = platform::debugger_request::by_address}, l));
        });
        uint64_t sum = 0;
        for (const platform::debugger_cost &c : l.profile) sum += c.own;
        EXPECT_TRUE(l.profiling);
        EXPECT_EQ(sum, l.profiled);
        EXPECT_GT(sum, 1000u);
        said("profile pause");
        said("back-go");

        // What is done otherwise while it stands leaves it standing, and ends the past where it must.
        use_item(menu_state_save + 5);
        strike(vk_f12);
        expect_parked(true);
        EXPECT_EQ(look().pc, 0);
        EXPECT_EQ(step(act::frame).running, false);
        use_item(menu_state_load + 5);
        EXPECT_EQ(look().pc, typed);
        acts(act::back_into);
        EXPECT_EQ(look().why, "履歴はここから");
        EXPECT_EQ(look().pc, typed);
        const uint64_t frames = run_state.frames;
        EXPECT_TRUE(do_and_stop([&] { use_item(menu_frame_forth); }).why.empty());
        EXPECT_EQ(run_state.frames, frames + 1);
        use_item(menu_frame_back);
        use_item(menu_pause); // goes on
        wait_until_running();
        expect_parked(false);
        use_item(menu_pause);
        expect_parked(true);
        EXPECT_FALSE(look().running);

        // A dialog in front of which the machine stops; the stop is told behind it.
        debugger([&](auto &d) { d.debugger_acts(act::go_or_stop, 0); });
        script.settings = [&](auto &) {
            window().press_key('C');
            return false;
        };
        host.set_script(script);
        EXPECT_EQ(do_and_stop([&] { strike(vk_f7); }).pc, typed);

        // Closed, the machine goes on, over what was a breakpoint.
        debugger([](auto &d) { d.debugger_closed("there"); });
        settle();
        EXPECT_EQ(window().state().debugger, nullptr);
        window().release_key('C');
        wait_until_running();
        expect_parked(false);
        wait_for_row(1, "zbc");
        type('D', "zbcd");

        // A processor that has stopped is a stop like another, and can be taken back.
        use_item(menu_debugger);
        EXPECT_EQ(do_and_stop([&] { window().press_key('0'); }).why, "CPUが停止: HALT");
        window().release_key('0');
        acts(act::back_into);
        EXPECT_EQ(look().why, "");
        acts(act::back_out);
        acts(act::go_or_stop);
        // and the end of the program closes the debugger
    });
    EXPECT_NE(platform::profile_string(folder / "config/kiv/kiv.ini", "Kiv", "debugger"), "");
}

// A debugger on the wire and the window in front of the same machine.
TEST_F(WholeProgram, ADebuggerOnTheWireStopsTheMachineAndLetsItGo) {
    options.gdb = "0";
    platform::wire client;
    run([&] {
        uint16_t port = 0;
        on_window_thread([&] { port = program.form->debugger_port(); });
        // What the client hears until `wanted` stands in it.
        const auto heard = [&](platform::wire &from, const std::string &wanted) {
            std::string all;
            wait_until(wanted, [&] {
                char bytes[4096];
                const int64_t got = from.read(bytes, sizeof bytes);
                if (got > 0) all.append(bytes, static_cast<size_t>(got));
                return all.find(wanted) != std::string::npos || (got < 0 && wanted == "gone");
            });
            return all;
        };
        const auto say = [&](const std::string &bytes) {
            EXPECT_EQ(client.write(bytes.data(), bytes.size()), static_cast<int64_t>(bytes.size()));
        };
        const auto ask = [&](const std::string &data, const std::string &answer) {
            say(packet_of(data));
            return heard(client, answer);
        };
        const auto come = [&] {
            client = platform::wire::connect("127.0.0.1", port);
            ask("qSupported:swbreak+", "ReverseStep");
            expect_parked(true);
        };
        char typed[16]; // the routine for a key that went down
        constexpr uint8_t begins[] = {0xE5, 0x7A, 0xFE, 0x30};
        const auto found =
            std::search(std::begin(test_rom), std::end(test_rom), std::begin(begins), std::end(begins));
        std::snprintf(typed, sizeof typed, "0,%zx,1", static_cast<size_t>(found - std::begin(test_rom)));

        type('Z', "z");
        come();
        EXPECT_EQ(window().state().notices.back(), "デバッガが接続しました");
        ask(std::string("Z") + typed, "$OK");
        ask("c", "+");
        wait_until_running();
        window().press_key('A');
        heard(client, "swbreak");
        expect_parked(true);
        EXPECT_EQ(screen_row(1), "z");
        // The person cannot take it out of the client's hands, and no second client can.
        for (const uint32_t id : {menu_pause, menu_debugger, menu_rewind, menu_frame_back}) use_item(id);
        expect_parked(true);
        EXPECT_EQ(window().state().debugger, nullptr);
        platform::wire second = platform::wire::connect("127.0.0.1", port);
        EXPECT_NE(heard(second, "attached").find("E.another"), std::string::npos);
        ask("s", "T05");
        ask("bs", "T05");
        ask("bc", "replaylog:begin");
        ask("qRcmd," + hex_of("where"), "#");
        window().release_key('A');
        ask("c", "+");
        wait_until_running();
        window().press_key('A');
        heard(client, "swbreak");
        EXPECT_EQ(screen_row(1), "z");
        ask(std::string("z") + typed, "$OK");
        ask("c", "+");
        window().release_key('A');
        wait_for_row(1, "za");
        say("\x03");
        heard(client, "T02");
        expect_parked(true);
        // A pause by the person is a stop for the client; a dialog is none, and what is said meanwhile
        // counts.
        ask("c", "+");
        wait_until_running();
        use_item(menu_pause);
        heard(client, "T02");
        ask("c", "+");
        wait_until_running();
        script.settings = [&](auto &) {
            say("\x03");
            return false;
        };
        host.set_script(script);
        strike(vk_f7);
        heard(client, "T02");
        expect_parked(true);
        // It goes, with a word or without; the machine goes on.
        ask("D", "$OK");
        heard(client, "gone");
        wait_until_running();
        type('B', "zab");
        come();
        client.close();
        wait_until("the machine", [] { return program.cpu_thread->is_suspended() == 0; });
        type('C', "zabc");
        use_item(menu_debugger);
        client = platform::wire::connect("127.0.0.1", port);
        heard(client, "E.the debugger's window is open");
        use_item(menu_debugger);
        come();
        ask("c", "+");
    });
    char last[64] = {};
    EXPECT_GT(client.read(last, sizeof last - 1), 0);
    EXPECT_EQ(last, packet_of("W00")) << "the program's end is told";
}

} // namespace
