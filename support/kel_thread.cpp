#include "support/kel_thread.h"

#include "platform/event.h"

#include "support/log.h"
#include <cstdio>
#include <exception>

kel_thread::~kel_thread() { kel_thread::stop(); }

void kel_thread::thread_entry(void *object) {
    kel_thread &self = *static_cast<kel_thread *>(object);
    self.running.exchange(1);
    try {
        self.run();
    } catch (const std::exception &e) { // out of memory, as a rule: the thread ends, the program need not
        self.failed(e.what());
    }
    self.running.exchange(0);
    self.release_handle();
}

void kel_thread::failed(const char *reason) {
    trace("thread %u ends: %s", id(), reason);
    std::fprintf(stderr, "kiv: a thread has ended: %s\n", reason);
}

platform::thread_handle kel_thread::current_thread() {
    platform::forced_end_deferral deferral;
    std::lock_guard lock(handle_mutex);
    return thread;
}

bool kel_thread::has_thread() { return current_thread() != nullptr; }

int kel_thread::create_thread(int suspended) {
    platform::forced_end_deferral deferral;
    std::lock_guard lock(handle_mutex); // a body that returns at once waits here to give its handle up
    if (thread) return 0;
    platform::wait_thread(last_thread, platform::wait_forever); // past its last touch of this object
    last_thread = thread = platform::create_thread(thread_entry, this, suspended != 0);
    thread_id = platform::thread_id(thread);
    return thread ? 1 : 0;
}

void kel_thread::stop() {
    platform::thread_handle stopped;
    {
        platform::forced_end_deferral deferral;
        std::lock_guard lock(handle_mutex);
        stopped = last_thread;
    }
    if (!stopped || platform::thread_id(stopped) == platform::current_thread_id()) return;
    if (!platform::wait_thread(stopped, grace_ms)) {
        trace("thread %u did not end within %u ms: ended by force", platform::thread_id(stopped), grace_ms);
        platform::terminate_thread(stopped);
        running.exchange(0);
    }
    platform::forced_end_deferral deferral;
    std::lock_guard lock(handle_mutex);
    if (thread == stopped) {
        thread = nullptr;
        thread_id = 0;
    }
    if (last_thread == stopped) last_thread = nullptr;
}

uint32_t kel_thread::suspend() { return platform::suspend_thread(current_thread()); }

uint32_t kel_thread::resume_thread() { return platform::resume_thread(current_thread()); }

int kel_thread::get_priority() { return platform::get_thread_priority(current_thread()); }

void kel_thread::set_priority(int priority) { platform::set_thread_priority(current_thread(), priority); }

void kel_thread::post_message(uint32_t message, uint64_t wparam, uint64_t lparam) {
    if (const uint32_t receiver = thread_id)
        platform::post_thread_message(receiver, {message, wparam, lparam});
}

void kel_thread::release_handle() {
    platform::forced_end_deferral deferral;
    std::lock_guard lock(handle_mutex);
    thread = nullptr;
    thread_id = 0;
}
