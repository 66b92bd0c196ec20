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

// A number that names a thread within the process; never 0, and 0 for a null handle.
uint32_t thread_id(const thread_handle &handle);
uint32_t current_thread_id();

// Suspend counts: the count before the call, `suspend_failed` for a thread that has ended. A suspended thread
// stops wherever it is, with whatever locks it holds; the normal run suspends a thread only before it starts.
constexpr uint32_t suspend_failed = 0xFFFFFFFF;
uint32_t suspend_thread(const thread_handle &handle);
uint32_t resume_thread(const thread_handle &handle);

// Scheduling priority, 0 normal, -2 lowest to 2 highest. What the host refuses is kept and reported back.
int get_thread_priority(const thread_handle &handle);
void set_thread_priority(const thread_handle &handle, int priority);

// Waits for the thread's end, at most `milliseconds`. True: it has ended, and nothing of it runs any more. A
// thread that waits for itself gets false at once.
bool wait_thread(const thread_handle &handle, uint32_t milliseconds);

// Ends the thread where it is, running none of the destructors of what it was doing, and waits a moment for
// that; a thread that has not started never will. What it held stays held: only before the process ends
// anyway. Does nothing for the calling thread.
void terminate_thread(const thread_handle &handle);

// While one lives, a forced end of the calling thread waits for its next blocking call, so that no lock of
// the guarded code stays held and no list stays half linked.
class forced_end_deferral {
  public:
    forced_end_deferral();
    ~forced_end_deferral();
    forced_end_deferral(const forced_end_deferral &) = delete;
    forced_end_deferral &operator=(const forced_end_deferral &) = delete;

  private:
    int former_type;
};

// Posts to a thread's own queue; never blocks, keeps order. Does nothing for a thread that is gone.
void post_thread_message(uint32_t thread_id, const message &m);

// On the calling thread's own queue: waits for the next message; takes one message of the given id if there
// is one.
message get_message();
bool peek_message(uint32_t id, message &m);

// Affinity masks: bit n is processor n. The process mask is the one that the process was started with, 0 when
// the host does not say; new threads start with it, whatever their creator is pinned to. Setting a mask
// without a processor of it fails and changes nothing.
uint64_t process_affinity();
bool set_current_thread_affinity(uint64_t mask);

} // namespace platform
