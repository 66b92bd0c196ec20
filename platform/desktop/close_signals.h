// Signals that ask the program to end: Ctrl-C in the terminal, a terminal that closes, a log-off, `kill`.
#pragma once

namespace platform {

// While it lives these signals no longer end the process; they make a descriptor readable, for an event loop
// to watch. What was ignored from the start (nohup) stays ignored. One object at a time.
class close_signals {
  public:
    close_signals();
    ~close_signals();
    close_signals(const close_signals &) = delete;
    close_signals &operator=(const close_signals &) = delete;

    int descriptor() const; // -1 when the host has none to give: the signals then end the process as ever
    void take();            // the descriptor is no longer readable until the next signal
};

} // namespace platform
