// Threads over pthreads, because the standard library's can neither be ended from outside nor start
// suspended.
//
// Three locks, never nested: the registry of identifiers, a thread's life, a thread's message queue. The
// thread itself holds the last two only under a forced_end_deferral, so that ending it by force cannot leave
// them locked for the others.
#include "platform/thread.h"

#include "platform/event.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/resource.h>
#include <unistd.h>
#include <unordered_map>

namespace platform {

class thread {
  public:
    uint32_t id = 0;
    void (*entry)(void *) = nullptr;
    void *argument = nullptr;

    std::mutex life_mutex;
    std::condition_variable life_changed;
    pthread_t native{};
    pid_t kernel_id = 0;      // 0 until it runs
    bool created = false;     // by create_thread; false for a thread that merely asked for its queue
    bool passed_gate = false; // it runs `entry`, or has
    bool cancelled = false;   // terminated
    bool ended = false;
    bool joined = false;
    int priority = 0;
    // Written under life_mutex; the signal handler reads it without.
    std::atomic<uint32_t> suspend_count{0};
    sem_t stopped; // posted by the handler once it has stopped the thread

    std::mutex queue_mutex;
    std::condition_variable queue_changed;
    std::deque<message> queue;

    thread() { sem_init(&stopped, 0, 0); }
    ~thread() {
        if (created && !joined) pthread_detach(native);
        sem_destroy(&stopped);
    }
    thread(const thread &) = delete;
    thread &operator=(const thread &) = delete;
};

namespace {

constexpr std::chrono::milliseconds forced_end_patience(1000);
constexpr std::chrono::milliseconds suspend_patience(100);

// Never destroyed: threads may outlive the end of main.
struct id_registry {
    std::mutex mutex;
    uint32_t last_id = 0;
    std::unordered_map<uint32_t, std::weak_ptr<thread>> threads;
};

id_registry &registry() {
    static auto &the_registry = *new id_registry;
    return the_registry;
}

void enter_into_registry(const thread_handle &t) {
    id_registry &ids = registry();
    forced_end_deferral deferral;
    std::lock_guard lock(ids.mutex);
    do t->id = ++ids.last_id;
    while (t->id == 0 || ids.threads.contains(t->id));
    ids.threads[t->id] = t;
}

void leave_registry(uint32_t id) {
    id_registry &ids = registry();
    std::lock_guard lock(ids.mutex);
    ids.threads.erase(id);
}

// ---- the calling thread ------------------------------------------------------------------------------

// A thread of someone else's making gets its queue with its first look at it.
struct own_thread {
    thread_handle handle;
    ~own_thread() {
        if (handle && !handle->created) leave_registry(handle->id);
    }
};
thread_local own_thread own;
thread_local thread *suspended_self = nullptr; // for the signal handler: no guard, no constructor

const thread_handle &current() {
    if (!own.handle) {
        own.handle = std::make_shared<thread>();
        enter_into_registry(own.handle);
    }
    return own.handle;
}

// ---- suspension --------------------------------------------------------------------------------------

int suspend_signal() { return SIGRTMIN + 3; }

// Everything here is safe in a signal handler. The signal is blocked except inside sigsuspend, so that a
// resume between the test and the wait is not lost.
void suspend_handler(int) {
    const int saved_errno = errno;
    thread *self = suspended_self;
    if (self != nullptr && self->suspend_count.load() != 0) {
        sem_post(&self->stopped);
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        sigdelset(&mask, suspend_signal());
        while (self->suspend_count.load() != 0) sigsuspend(&mask);
    }
    errno = saved_errno;
}

void install_suspend_handler() {
    struct sigaction action {};
    action.sa_handler = suspend_handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(suspend_signal(), &action, nullptr);
}

// ---- a thread's life ---------------------------------------------------------------------------------

// The nice values beside the priorities -2 to 2.
void apply_priority(pid_t kernel_id, int priority) {
    setpriority(PRIO_PROCESS, static_cast<id_t>(kernel_id), std::clamp(priority, -2, 2) * -5);
}

// Marks the thread as ended whatever way it ends: a forced end unwinds through here.
struct end_marker {
    thread_handle self;
    ~end_marker() {
        forced_end_deferral deferral;
        suspended_self = nullptr;
        leave_registry(self->id);
        std::lock_guard lock(self->life_mutex);
        self->ended = true;
        self->life_changed.notify_all();
    }
};

// Waits until nothing suspends the thread any more. False: it was terminated before it began.
bool pass_gate(thread &self) {
    std::unique_lock lock(self.life_mutex);
    self.kernel_id = gettid();
    if (self.priority != 0) apply_priority(self.kernel_id, self.priority);
    self.life_changed.wait(lock, [&] { return self.suspend_count == 0 || self.cancelled; });
    self.passed_gate = true;
    return !self.cancelled;
}

void *thread_body(void *argument) {
    end_marker marker{std::move(*static_cast<thread_handle *>(argument))};
    delete static_cast<thread_handle *>(argument);
    thread &self = *marker.self;
    own.handle = marker.self;
    suspended_self = &self;
    if (!pass_gate(self)) return nullptr;
    // Before this, nobody cancels: terminate_thread does so only past the gate, and the type is deferred.
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    self.entry(self.argument);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    return nullptr;
}

struct process_processors {
    cpu_set_t set;
    uint64_t mask = 0;
    process_processors() {
        CPU_ZERO(&set);
        if (sched_getaffinity(0, sizeof set, &set) != 0) return;
        for (int n = 0; n < 64; n++)
            if (CPU_ISSET(n, &set)) mask |= uint64_t{1} << n;
    }
};

// Read before main: once a thread is pinned, the host can no longer tell what the process was given.
const process_processors processors;

bool is_current(const thread_handle &handle) { return own.handle == handle; }

} // namespace

forced_end_deferral::forced_end_deferral() { pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &former_type); }

forced_end_deferral::~forced_end_deferral() { pthread_setcanceltype(former_type, nullptr); }

thread_handle create_thread(void (*entry)(void *), void *argument, bool suspended) {
    static const bool installed = (install_suspend_handler(), true);
    static_cast<void>(installed);

    auto made = std::make_shared<thread>();
    made->entry = entry;
    made->argument = argument;
    made->suspend_count = suspended ? 1 : 0;
    enter_into_registry(made);

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (processors.mask != 0)
        pthread_attr_setaffinity_np(&attributes, sizeof processors.set, &processors.set);
    auto *for_body = new thread_handle(made);
    int error;
    {
        std::lock_guard lock(made->life_mutex);
        error = pthread_create(&made->native, &attributes, thread_body, for_body);
        made->created = error == 0;
    }
    pthread_attr_destroy(&attributes);
    if (error == 0) return made;
    delete for_body;
    leave_registry(made->id);
    return nullptr;
}

uint32_t thread_id(const thread_handle &handle) { return handle ? handle->id : 0; }

uint32_t current_thread_id() { return current()->id; }

uint32_t suspend_thread(const thread_handle &handle) {
    if (!handle) return suspend_failed;
    std::unique_lock lock(handle->life_mutex);
    if (handle->ended || !handle->created) return suspend_failed;
    const uint32_t former = handle->suspend_count++;
    if (former != 0 || !handle->passed_gate) return former;
    if (is_current(handle)) {
        lock.unlock(); // else nobody could resume it
        pthread_kill(pthread_self(), suspend_signal());
        while (sem_trywait(&handle->stopped) == 0) {
        }
        return former;
    }
    while (sem_trywait(&handle->stopped) == 0) {
    }
    pthread_kill(handle->native, suspend_signal());
    lock.unlock();
    timespec give_up;
    clock_gettime(CLOCK_MONOTONIC, &give_up);
    give_up.tv_nsec += std::chrono::nanoseconds(suspend_patience).count();
    give_up.tv_sec += give_up.tv_nsec / 1'000'000'000;
    give_up.tv_nsec %= 1'000'000'000;
    while (sem_clockwait(&handle->stopped, CLOCK_MONOTONIC, &give_up) != 0 && errno == EINTR) {
    }
    return former;
}

uint32_t resume_thread(const thread_handle &handle) {
    if (!handle) return suspend_failed;
    std::lock_guard lock(handle->life_mutex);
    if (handle->ended || !handle->created) return suspend_failed;
    const uint32_t former = handle->suspend_count;
    if (former == 0) return 0;
    handle->suspend_count = former - 1;
    if (former > 1) return former;
    if (handle->passed_gate)
        pthread_kill(handle->native, suspend_signal());
    else
        handle->life_changed.notify_all();
    return former;
}

int get_thread_priority(const thread_handle &handle) {
    if (!handle) return 0;
    std::lock_guard lock(handle->life_mutex);
    return handle->priority;
}

void set_thread_priority(const thread_handle &handle, int priority) {
    if (!handle) return;
    std::lock_guard lock(handle->life_mutex);
    handle->priority = priority;
    if (handle->kernel_id != 0 && !handle->ended) apply_priority(handle->kernel_id, priority);
}

bool wait_thread(const thread_handle &handle, uint32_t milliseconds) {
    if (!handle) return true;
    if (is_current(handle) || !handle->created) return false;
    forced_end_deferral deferral;
    std::unique_lock lock(handle->life_mutex);
    const auto has_ended = [&] { return handle->ended; };
    if (milliseconds == wait_forever)
        handle->life_changed.wait(lock, has_ended);
    else if (!handle->life_changed.wait_until(
                 lock, std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds), has_ended))
        return false;
    // It needs the lock for nothing any more, and a second waiter must not come before the join is through.
    if (!handle->joined) {
        pthread_join(handle->native, nullptr);
        handle->joined = true;
    }
    return true;
}

void terminate_thread(const thread_handle &handle) {
    if (!handle || is_current(handle) || !handle->created) return;
    {
        std::lock_guard lock(handle->life_mutex);
        if (handle->ended || handle->cancelled) return;
        handle->cancelled = true;
        if (handle->passed_gate) pthread_cancel(handle->native);
        handle->life_changed.notify_all();
    }
    wait_thread(handle, static_cast<uint32_t>(forced_end_patience.count()));
}

void post_thread_message(uint32_t thread_id, const message &m) {
    forced_end_deferral deferral;
    thread_handle receiver;
    {
        id_registry &ids = registry();
        std::lock_guard lock(ids.mutex);
        const auto found = ids.threads.find(thread_id);
        if (found != ids.threads.end()) receiver = found->second.lock();
    }
    if (!receiver) return;
    std::lock_guard lock(receiver->queue_mutex);
    receiver->queue.push_back(m);
    receiver->queue_changed.notify_one();
}

message get_message() {
    thread &self = *current();
    forced_end_deferral deferral;
    std::unique_lock lock(self.queue_mutex);
    self.queue_changed.wait(lock, [&] { return !self.queue.empty(); });
    const message m = self.queue.front();
    self.queue.pop_front();
    return m;
}

bool peek_message(uint32_t id, message &m) {
    thread &self = *current();
    forced_end_deferral deferral;
    std::lock_guard lock(self.queue_mutex);
    const auto found =
        std::find_if(self.queue.begin(), self.queue.end(), [&](const message &q) { return q.id == id; });
    if (found == self.queue.end()) return false;
    m = *found;
    self.queue.erase(found);
    return true;
}

uint64_t process_affinity() { return processors.mask; }

bool set_current_thread_affinity(uint64_t mask) {
    if (processors.mask != 0) mask &= processors.mask;
    if (mask == 0) return false;
    cpu_set_t set;
    CPU_ZERO(&set);
    for (int n = 0; n < 64; n++)
        if (mask >> n & 1) CPU_SET(n, &set);
    return sched_setaffinity(0, sizeof set, &set) == 0;
}

} // namespace platform
