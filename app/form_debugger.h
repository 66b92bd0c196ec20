// The debugger in the window: what its window asks for and does, on the machine that the form runs. While it
// exists the CPU thread runs the machine by it.
#pragma once

#include "app/debug_session.h"
#include "app/kiv_form.h"
#include "platform/debugger.h"

class kiv_form::debugger final : public platform::debugger_listener {
  public:
    explicit debugger(kiv_form &f); // the CPU thread parked
    debug_session session;

    void stopped(); // the message from the CPU thread
    void stopped_by_hand();
    static void show_machine();

    bool debugger_looks(const platform::debugger_request &at, platform::debugger_look &look) override;
    void debugger_acts(platform::debugger_action action, uint16_t value) override;
    std::string debugger_sets_register(int index, uint32_t value) override;
    std::string debugger_writes(int area, uint32_t address, const std::vector<uint8_t> &bytes) override;
    void debugger_toggles_point(uint16_t address) override;
    std::string debugger_adds_point(const std::string &text) override;
    void debugger_removes_point(uint32_t id) override;
    void debugger_enables_point(uint32_t id, bool on) override;
    void debugger_command(const std::string &line) override;
    std::vector<std::string> debugger_lines() override { return session.take_lines(); }
    std::vector<std::string> debugger_completes(const std::string &line) override;
    int64_t debugger_finds(const std::string &text, std::string &wrong) override;
    void debugger_closed(const std::string &layout) override;

  private:
    template <class Do> bool while_parked(Do what); // false: there is no thread that could be parked
    template <class Do> bool work(Do what);         // what may take long, parked; false: the program ends
    void run(aim_kind kind, uint16_t address);
    void step_back(aim_kind kind);
    void moved(); // the window is to look again

    kiv_form &form;
    uint64_t changes = 0;
    bool working = false;
};
