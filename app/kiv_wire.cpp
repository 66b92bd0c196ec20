// Debuggers on a wire: who may come, what they do to the machine, and how it goes on after them.
#include "app/form_wire.h"

#include "api/kiv.h"
#include "app/form_debugger.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "platform/file.h"
#include "platform/texts.h"
#include "support/log.h"

#include <cstdio>
#include <utility>

using platform::text;

// ---- the form's part ---------------------------------------------------------------------------------

void kiv_form::open_wire() {
    if (options.gdb.empty()) return;
    try {
        wire = std::make_unique<wire_debugger>(*this, options.gdb);
        std::fprintf(stderr, "kiv: a debugger may come to port %u\n", static_cast<unsigned>(wire->port()));
    } catch (const debug_error &error) {
        const std::string why = std::string("--gdb: ") + error.what();
        std::fprintf(stderr, "kiv: %s\n", why.c_str());
        tell_fault(why);
    }
}

uint16_t kiv_form::debugger_port() const { return wire ? wire->port() : uint16_t{0}; }

debug_session *kiv_form::session() const {
    if (debugging) return &debugging->session;
    return wire ? wire->session() : nullptr;
}

bool kiv_form::wire_refuses() {
    if (!wire || wire->session() == nullptr) return false;
    notify(text("通信のデバッガが使っています"));
    return true;
}

// ---- clients -----------------------------------------------------------------------------------------

kiv_form::wire_debugger::attached_client::attached_client(kiv_form &f)
    : session(
          program.directx->sound(), [&f] { f.post(WM_DEBUG_STOPPED, 0, 0); },
          [&f](const std::string &path) {
              if (!f.window->save_picture(path)) throw debug_error(path + ": " + platform::last_file_error());
          }),
      line(session.driver) {}

kiv_form::wire_debugger::wire_debugger(kiv_form &f, const std::string &place) : form(f) {
    door.open(parse_gdb_place(place));
    for (const int each : door.listening().descriptors()) watch(each, &wire_debugger::welcome);
}

kiv_form::wire_debugger::~wire_debugger() {
    for (const int each : door.listening().descriptors()) form.host.watch(each, nullptr);
    if (!visit) return;
    form.host.watch(client_descriptor, nullptr);
    visit->line.end(0);
}

void kiv_form::wire_debugger::watch(int descriptor, void (wire_debugger::*ready)()) {
    form.host.watch(descriptor, [&f = form, ready] {
        if (f.wire) (f.wire.get()->*ready)();
    });
}

void kiv_form::wire_debugger::welcome() {
    while (platform::wire visitor = door.next()) {
        start_ticks();
        if (visit)
            door.refuse(std::move(visitor), "another debugger is attached");
        else if (form.debugging)
            door.refuse(std::move(visitor), "the debugger's window is open");
        else if (!begin(std::move(visitor)))
            return;
    }
}

bool kiv_form::wire_debugger::begin(platform::wire visitor) {
    form.end_rewind();
    const bool parked = form.held || form.in_dialog || form.deactivated;
    if (!parked && !form.pause_machine()) return false;
    form.typing.cancel();
    visit = std::make_unique<attached_client>(form);
    visit->line.stub.monitor = [this](const std::string &line) { return monitored(line); };
    program.cpu_thread->run_from(&visit->session);
    client_descriptor = visitor.descriptor();
    visit->line.take(std::move(visitor));
    watch(client_descriptor, &wire_debugger::hear);
    follow({});
    form.notify(text("デバッガが接続しました"));
    return true;
}

// What the console says to a line of `monitor`. `quit` closes the program, as it ends other runs.
std::string kiv_form::wire_debugger::monitored(const std::string &line) {
    if (!visit->session.execute(line, false)) form.post(platform::wm_close, 0, 0);
    std::string all;
    for (const std::string &each : visit->session.take_lines()) all += each + "\n";
    return all;
}

void kiv_form::wire_debugger::leave(const std::string &how) {
    form.host.watch(client_descriptor, nullptr);
    program.cpu_thread->run_from(nullptr);
    visit.reset();
    form.held = false;
    form.release_keys();
    if (!form.in_dialog && !form.deactivated) form.resume_held();
    form.notify(text("デバッガが離れました"));
    trace("--gdb: %s", how.c_str());
    form.window->menus_changed();
}

// ---- what they say -----------------------------------------------------------------------------------

// Does something with the client while the machine stands between two passes.
template <class Do> void kiv_form::wire_debugger::at_work(Do what) {
    if (!visit) return;
    const bool parked = form.held || form.in_dialog || form.deactivated;
    if (!parked && !form.pause_machine()) return; // it has ended, and with it soon the program
    const uint64_t before = kiv_t_states();
    std::string gone;
    tell_lines();
    visit->session.drive([&] { gone = what(); });
    if (kiv_t_states() < before) form.release_keys();
    if (gone.empty()) gone = visit->line.tell();
    follow(gone);
}

// The machine runs or stands as the client has it now, or goes on without one.
void kiv_form::wire_debugger::follow(const std::string &gone) {
    if (!gone.empty()) return leave(gone);
    debug_session &session = visit->session;
    const bool runs = visit->line.stub.runs(), was_held = form.held;
    if (runs) {
        if (session.stands()) session.set_going();
    } else if (!session.stands()) {
        session.stop_here();
    }
    form.held = !runs;
    if (runs && !form.in_dialog && !form.deactivated) program.cpu_thread->resume_run();
    if (!runs) {
        program.directx->stop();
        silent = seen_late = true;
    }
    if (was_held != form.held) form.window->menus_changed();
}

void kiv_form::wire_debugger::hear() {
    at_work([this] { return visit->line.hear(); });
}

void kiv_form::wire_debugger::stopped() {
    at_work([this] {
        if (visit->session.stands()) visit->line.stub.has_stopped(visit->session.last());
        return std::string();
    });
}

void kiv_form::wire_debugger::stopped_by_hand() {
    at_work([this] {
        visit->line.stub.has_stopped({.kind = stop_kind::asked});
        return std::string();
    });
}

// Of log points, and of stops that nobody asked for.
void kiv_form::wire_debugger::tell_lines() {
    for (const std::string &line : visit->session.take_lines()) visit->line.stub.say(line);
}

// ---- what nothing tells ------------------------------------------------------------------------------

void kiv_form::wire_debugger::start_ticks() {
    if (std::exchange(ticks, true)) return;
    form.host.every(between_answers, [&f = form] { return f.wire && f.wire->tick(); });
}

bool kiv_form::wire_debugger::tick() {
    door.drain();
    if (visit && visit->line.stub.waits()) hear();
    if (visit && (visit->session.has_lines() || !visit->line.stub.output().empty()))
        at_work([] { return std::string(); });
    if (visit && form.held && std::exchange(seen_late, false)) debugger::show_machine();
    // A step is over before its sound could begin.
    const bool runs = visit && !form.held && !form.in_dialog && !form.deactivated;
    if (runs && std::exchange(silent, false)) program.directx->play();
    ticks = visit || !door.sent_away().empty();
    return ticks;
}
