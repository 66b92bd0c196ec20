#include "app/program.h"

#include "app/kiv_assay.h"
#include "app/kiv_form.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "platform/event.h"
#include "platform/instance_lock.h"
#include "platform/thread.h"

#include <cstdio>
#include <new>

program_objects program{};

void show_failure(platform::host &host, const char *text) {
    host.error_box(nullptr, platform::text(text), program_title);
}

namespace {

constexpr char instance_name[] = "ZunMultiBootChecker";
constexpr uint64_t first_processor = 1;
constexpr uint32_t timer_resolution_ms = 1;

void report_start_failure(platform::host &host, const char *text) {
    program.assay->trace("ERROR %s", text);
    show_failure(host, text);
}

// The steps between the platform's set-up and its restoring; the exit code.
int start_and_run(platform::host &host, platform::event &sound_mutex) {
    if (!program.form->create(program_title, 0, 0, 640, 480))
        return report_start_failure(host, "CreateWindowEx失敗"), 1;
    sound_mutex = platform::event::create("SNDMUTEX"); // nobody waits on it
    if (!sound_mutex) return report_start_failure(host, "CreateMutex失敗"), 1;
    program.assay->trace("ENTER message Loop");
    const int code = program.form->initialize() ? host.run_message_loop() : 1;
    program.assay->trace("LEAVE message Loop");
    return code;
}

int run(platform::host &host) {
    if (!platform::set_current_thread_affinity(first_processor))
        program.assay->trace("run: the window thread runs on any processor");
    host.begin_timer_resolution(timer_resolution_ms);
    platform::event sound_mutex;
    const int code = start_and_run(host, sound_mutex);
    host.end_timer_resolution(timer_resolution_ms);
    sound_mutex.close();
    return code;
}

template <class T> void destroy(T *&object) {
    delete object;
    object = nullptr;
}

} // namespace

int run_program(platform::host &host, const program_options &options) {
    program.assay = new (std::nothrow) kiv_assay;
    platform::instance_lock lock;
    switch (lock.acquire(instance_name)) {
    case platform::instance_lock::result::already_running:
        trace("Zun 多重起動検知");
        std::fprintf(stderr, "kiv: another copy is running%s\n",
                     lock.call_first(instance_name) ? "; its window comes to the front" : "");
        destroy(program.assay);
        return 1;
    case platform::instance_lock::result::failed:
        trace("run: a second copy cannot be told"); // no folder to keep the lock in; one copy can still run
        break;
    case platform::instance_lock::result::acquired: break;
    }
    program.form = new (std::nothrow) kiv_form(host, options);
    program.directx = new (std::nothrow) kiv_directx(host);
    program.cpu_thread = new (std::nothrow) z80_thread;
    trace("------------------ Kiv start ----------------");
    if (lock.call_descriptor() >= 0)
        host.watch(lock.call_descriptor(), [&lock] {
            lock.take_call();
            if (program.form != nullptr) program.form->come_to_front();
        });
    const int code = run(host);
    if (lock.call_descriptor() >= 0) host.watch(lock.call_descriptor(), nullptr);
    trace("------------------ Kiv end ------------------");
    destroy(program.directx);
    destroy(program.cpu_thread);
    destroy(program.form);
    destroy(program.assay);
    return code;
}
