// Threads of the host as the emulator uses them: created suspended or running, with a message queue each,
// waited for with a bound and, as a last resort, ended from outside.
#pragma once

#include <cstdint>
#include <memory>

namespace platform {

struct message {
    uint32_t id;
    uint64_t wparam, lparam;
};

class thread;
using thread_handle = std::shared_ptr<thread>;

// Creates a thread that runs entry(argument). Null handle when the host has none to give.
thread_handle create_thread(void (*entry)(void *), void *argument, bool suspended);

// A number that names a thread within the process; never 0.
uint32_t thread_id(const thread_handle &handle);

// Suspend counts as the host keeps them: the count before the call. Suspending a thread that already runs
// stops it at its next blocking point only when the host cannot do better; the normal run never does it.
uint32_t suspend_thread(const thread_handle &handle);
uint32_t resume_thread(const thread_handle &handle);

// Scheduling priority, 0 normal, -2 lowest to 2 highest. What the host refuses is kept and reported back.
int get_thread_priority(const thread_handle &handle);
void set_thread_priority(const thread_handle &handle, int priority);

// Waits for the thread's end, at most `milliseconds`. True: it has ended.
bool wait_thread(const thread_handle &handle, uint32_t milliseconds);

// Ends the thread where it is, running none of its destructors. Only before the process ends anyway.
void terminate_thread(const thread_handle &handle);

// Posts to a thread's own queue; never blocks, keeps order. Does nothing for a thread that is gone.
void post_thread_message(uint32_t thread_id, const message &m);

// On the calling thread's own queue: waits for the next message; takes one message of the given id if there
// is one.
message get_message();
bool peek_message(uint32_t id, message &m);

// Affinity masks: bit n is processor n. The process mask is 0 when the host does not say. Setting a mask
// without an existing processor fails and changes nothing.
uint64_t process_affinity();
bool set_current_thread_affinity(uint64_t mask);

} // namespace platform
