// The debugger's one command language, for a terminal, a window, script files and a wire protocol's monitor.
// docs/debugger.md tells it; `help` does, too.
#pragma once

#include "debug/debug_driver.h"
#include "debug/expression.h"
#include "debug/memory_faults.h"
#include "debug/recorders.h"
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// What the console asks of its host; what is empty is refused with a word. Files throw debug_error.
struct console_host {
    std::function<void(const std::string &line)> print; // one line, without its end
    std::function<std::string(const std::string &path)> read_file;
    std::function<void(const std::string &path, std::string_view bytes)> write_file; // whole or not at all
    std::function<text_sink(const std::string &path)> grow_file; // finished when the sink is destroyed
    std::function<void(const std::string &path)> write_picture;
    std::function<void(const std::string &text)> type; // by its escapes; empty: \n is RETURN
};

class debug_console {
  public:
    debug_console(debug_driver &driver_, console_host host_);
    ~debug_console();
    debug_console(const debug_console &) = delete;
    debug_console &operator=(const debug_console &) = delete;

    // Runs one line; what is wrong with it is printed. Returns false once `quit` was said.
    bool execute(const std::string &line);
    // The lines of a script, until one is wrong. Each is named in its complaint.
    bool run_script(const std::string &path);
    // Commands or symbols that may stand in place of the last word.
    std::vector<std::string> complete(const std::string &line) const;

    bool quit() const { return has_quit; }
    int exit_code = 0;   // of `quit`
    int failures = 0;    // of `expect`, and lines that were wrong
    bool may_run = true; // false: commands that run the machine are refused
    // Somebody asked for the end of the line under way: repetitions and scripts end, too.
    bool interrupted() const { return was_interrupted; }
    // Shows where the machine stands, as after a stop.
    void show_stop(const stop_report &report);
    void show_place();

    // ---- recorders, also for who starts them by other ways than commands; throw debug_error
    void trace_into(const std::string &path);
    void profile_into(const std::string &path);
    const profile *profiled() const { return profiler.get(); } // null: no profile is taken
    bool profiling() const { return profiler && !profile_pauses; }
    void coverage_into(const std::string &path);
    void watch_faults(uint8_t kinds, bool of_roms, bool stop, int32_t port_of_a_test = -1);
    uint64_t faults() const { return fault_watch ? fault_watch->count() : 0; }
    void load_symbols(const std::string &path_and_bank); // FILE or FILE:BANK
    void load_listing(const std::string &path_and_bank);
    void finish_recorders(); // writes what is not written yet

    struct command;

  private:
    friend struct console_commands;
    using words = std::vector<std::string>;

    void print(const std::string &line) const { host.print(line); }
    void need_to_run() const;
    void run_and_show();
    const command *find(const std::string &name) const;

    debug_driver &driver;
    console_host host;
    bool has_quit = false;
    bool was_interrupted = false;
    int depth = 0; // of lines within lines
    int script_depth = 0;
    uint16_t next_dump = 0, next_listing = 0;
    int32_t dump_area = 0;
    std::string last_line;
    std::vector<std::pair<std::string, expression>> displays;

    std::unique_ptr<instruction_trace> trace;
    std::unique_ptr<profile> profiler;
    std::unique_ptr<coverage> covered;
    std::unique_ptr<memory_faults> fault_watch;
    std::string profile_path, coverage_path;
    bool profile_pauses = false;
};

// The areas of memory by the names that expressions know: "cpu" and the others; -1: none.
int32_t area_named(const std::string &name);
const char *area_name(int32_t area);
