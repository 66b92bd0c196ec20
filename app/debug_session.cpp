#include "app/debug_session.h"

#include "api/kiv.h"
#include "machine/cassette.h"
#include "platform/file.h"
#include "platform/texts.h"

#include <fstream>
#include <memory>
#include <utility>

namespace {

constexpr size_t most_lines = 10000; // that wait for the window

std::string whole_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes;
    char part[0x4000];
    do {
        in.read(part, sizeof part);
        bytes.append(part, static_cast<size_t>(in.gcount()));
    } while (in);
    // A folder can be opened; what fails is the reading.
    if (!in.is_open() || in.bad()) throw debug_error(path + ": cannot be read");
    return bytes;
}

void write_whole(const std::string &path, std::string_view bytes) {
    if (!platform::atomic_write(path, bytes.data(), bytes.size()))
        throw debug_error(path + ": " + platform::last_file_error());
}

// It grows while the machine runs, within an instruction: a disk that is full by then is told once, and stops
// nothing.
text_sink growing_file(const std::string &path, std::function<void(const std::string &)> tell) {
    const auto out = std::make_shared<std::ofstream>(path, std::ios::binary);
    const std::string wrong = path + ": cannot be written";
    if (!*out) throw debug_error(wrong);
    return [out, wrong, tell = std::move(tell)](const std::string &text) {
        if (*out && !(*out << text)) tell(wrong);
    };
}

} // namespace

debug_session::debug_session(sound_slices &sounds, std::function<void()> stopped,
                             std::function<void(const std::string &path)> write_picture)
    : slices(sounds), tell_stop(std::move(stopped)), console(driver, make_host(std::move(write_picture))) {
    kiv_lend(this);
    driver.keep_history({});
    driver.on_run = [this](int32_t ended_by) {
        if (ended_by == KIV_RUN_FRAME && at_frame != nullptr) (*at_frame)();
        if (at_frame == nullptr && goes_on && !goes_on(-1)) driver.ask_to_stop();
    };
    driver.on_work = [this](double part) {
        if (goes_on && !goes_on(part)) driver.ask_to_stop();
    };
}

debug_session::~debug_session() {
    take_changes();
    kiv_lend(nullptr);
}

console_host debug_session::make_host(std::function<void(const std::string &)> write_picture) {
    console_host host;
    host.print = [this](const std::string &line) {
        const std::lock_guard lock(mutex);
        if (lines.size() < most_lines) lines.push_back(line);
    };
    host.read_file = whole_file;
    host.write_file = write_whole;
    host.grow_file = [print = host.print](const std::string &path) { return growing_file(path, print); };
    host.write_picture = std::move(write_picture);
    return host;
}

std::vector<std::string> debug_session::take_lines() {
    const std::lock_guard lock(mutex);
    return std::exchange(lines, {});
}

bool debug_session::has_lines() const {
    const std::lock_guard lock(mutex);
    return !lines.empty();
}

void debug_session::before_pass(std::function<void()> change) {
    const std::lock_guard lock(mutex);
    changes.push_back(std::move(change));
}

void debug_session::take_changes() {
    std::vector<std::function<void()>> now;
    {
        const std::lock_guard lock(mutex);
        now.swap(changes);
    }
    const uint8_t seen = change_seen.exchange(0);
    if ((seen & 2) != 0)
        driver.forget_history();
    else if (seen != 0)
        driver.changed();
    for (const auto &change : now) change();
}

// ---- running -----------------------------------------------------------------------------------------

void debug_session::go(aim_kind kind, uint16_t address) {
    take_changes();
    driver.leave_here(); // the person sees it
    driver.aim(kind, address);
    set_going();
}

void debug_session::set_going() {
    standing = told = false;
    reason.clear();
}

void debug_session::stop_here() {
    take_changes();
    if (!standing) {
        reason.clear();
        last_stop = {};
    }
    standing = told = true;
}

void debug_session::take(const stop_report &report) {
    standing = true;
    last_stop = report;
    reason = describe(report, platform::texts_are_japanese() ? japanese_words : nullptr);
}

bool debug_session::run_slice(uint32_t t_states, const std::function<void()> &frame_ended) {
    if (!standing) {
        take_changes();
        forwards = true;
        at_frame = &frame_ended;
        const stop_report report = driver.run_slice(t_states);
        at_frame = nullptr;
        forwards = false;
        if (report.kind != stop_kind::running) take(report);
    }
    if (standing && !std::exchange(told, true)) tell_stop();
    return !standing;
}

// ---- on the window thread ----------------------------------------------------------------------------

// What the tape recorder got when a stretch of the past ran first does not come again.
class debug_session::recorder_scope {
  public:
    explicit recorder_scope(debug_session &s) {
        if (depth++ != 0) return; // a command that a client on the wire has given
        session = &s;
        real = cassette_record_with({[](uint8_t byte) {
                                         if (!session->driver.in_the_past()) real.put(byte);
                                     },
                                     [] { real.flush(); }});
    }
    ~recorder_scope() {
        if (--depth == 0) cassette_record_with(real);
    }
    recorder_scope(const recorder_scope &) = delete;
    recorder_scope &operator=(const recorder_scope &) = delete;

  private:
    inline static debug_session *session = nullptr;
    inline static int depth = 0;
    inline static cassette_recorder real{};
};

stop_report debug_session::back(aim_kind kind) {
    take_changes();
    const recorder_scope tape(*this);
    stop_report report = driver.back(kind);
    take(report);
    told = true;
    return report;
}

void debug_session::drive(const std::function<void()> &what) {
    take_changes();
    const recorder_scope tape(*this);
    what();
}

void debug_session::look_back(size_t count, const std::function<void(uint16_t, uint64_t)> &look) {
    take_changes();
    const recorder_scope tape(*this);
    driver.look_back(count, look);
}

void debug_session::show_stop() {
    if (last_stop.kind == stop_kind::running)
        console.show_place();
    else
        console.show_stop(last_stop);
}

std::string debug_session::command(const std::string &line) {
    const int before = console.failures;
    execute(line, false);
    const std::lock_guard lock(mutex);
    return console.failures != before && !lines.empty() ? lines.back() : std::string();
}

bool debug_session::execute(const std::string &line, bool may_run) {
    take_changes();
    console.may_run = may_run;
    const recorder_scope tape(*this);
    const uint64_t before = kiv_t_states();
    const bool lives = console.execute(line);
    driver.never_mind();
    if (kiv_t_states() != before) reason.clear();
    return lives;
}
