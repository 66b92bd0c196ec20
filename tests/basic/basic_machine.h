// A machine in which BASIC has said Ok, driven as a person drives it: by keys, by the deck, by what the
// screen shows.
#pragma once

#include "api/kiv.h"
#include "api/kiv_open_roms.h"
#include "tools/kiv_run_listing.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

class BasicMachine : public testing::Test {
  protected:
    // The power-on is the same for all, so it is made once and taken back from a snapshot.
    void SetUp() override {
        static std::vector<uint8_t> ready;
        if (ready.empty()) {
            const kiv_date date{1982, 11, 1, 12, 0, 0};
            kiv_seed(1);
            ASSERT_EQ(kiv_calendar_start(&date), KIV_OK);
            ASSERT_EQ(kiv_open_roms(), KIV_OK) << kiv_error_text();
            ASSERT_EQ(kiv_boot(), KIV_OK) << kiv_error_text();
            ASSERT_TRUE(run_until_still()) << screen();
            ready.resize(kiv_snapshot_size(KIV_SNAPSHOT_WHOLE));
            ASSERT_EQ(kiv_snapshot_save(KIV_SNAPSHOT_WHOLE, ready.data(), ready.size()), ready.size());
        }
        ASSERT_EQ(kiv_snapshot_load(ready.data(), ready.size()), KIV_OK) << kiv_error_text();
        kiv_release_keys();
    }

    static std::string screen() {
        std::string text(kiv_text_screen(nullptr, 0) + 1, '\0');
        text.resize(kiv_text_screen(text.data(), text.size()));
        return text;
    }

    // Runs until nothing is left to type and BASIC waits: half a second after Ok or a question, ten seconds
    // of a screen that stands still otherwise. False: it never does.
    static bool run_until_still(uint32_t most_frames = 60000) {
        std::string before;
        for (uint32_t frame = 0, still = 0; frame < most_frames; ++frame) {
            if (kiv_run_frame() == KIV_RUN_STOPPED) {
                ADD_FAILURE() << "the processor stopped at " << std::hex << kiv_stop_address();
                return false;
            }
            if (frame % 4 != 0) continue;
            std::string now = screen();
            still = kiv_type_waiting() == 0 && now == before ? still + 4 : 0;
            if (still >= (waits(now) ? 28u : 560u)) return true;
            before = std::move(now);
        }
        return false;
    }

    // Ok, or a question, behind the last that was shown. The line of function keys does not count.
    static bool waits(const std::string &text) {
        auto lines = lines_of(text);
        while (!lines.empty() && (lines.back().empty() || lines.back().starts_with(" LIST")))
            lines.pop_back();
        return !lines.empty() && (lines.back() == "Ok" || lines.back().ends_with('?'));
    }

    static void type(const std::string &text) {
        ASSERT_EQ(kiv_type(text.c_str()), KIV_OK) << kiv_error_text() << " in " << text;
        EXPECT_TRUE(run_until_still()) << text << " never ends:\n" << screen();
    }

    // Puts a listing into the deck and loads it.
    static void load(const std::string &listing, const std::string &name) {
        const std::string tape = listing_tape(listing, name);
        ASSERT_EQ(kiv_tape_insert(tape.data(), tape.size()), KIV_OK);
        type("CLOAD\n");
    }

    // The lines without blanks at their ends, empty ones at the end left out.
    static std::vector<std::string> lines_of(const std::string &text) {
        std::vector<std::string> lines;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);)
            lines.push_back(line.substr(0, line.find_last_not_of(" \r") + 1));
        while (!lines.empty() && lines.back().empty()) lines.pop_back();
        return lines;
    }
};
