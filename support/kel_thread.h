// The base of the worker threads: one thread of the host, whose body is the subclass's `run`.
//
// `stop` does not ask the body to end: the subclass does that in its own way and then calls `stop`, which
// waits and, when the grace period is over, ends the thread by force. An object may not be destroyed by its
// own thread, and must be stopped before the part of it that `run` uses is destroyed.
#pragma once

#include "platform/thread.h"
#include <atomic>
#include <cstdint>
#include <mutex>

class kel_thread {
  public:
    kel_thread() = default;
    kel_thread(const kel_thread &) = delete;
    kel_thread &operator=(const kel_thread &) = delete;

    // 1, or 0 when the host has no thread to give or one exists already.
    virtual int create_thread(int suspended);
    // Waits for the thread's end, at most the grace period, then ends it by force. Without a thread, and on
    // the thread itself, nothing happens.
    virtual void stop();
    // The suspend count before the call; platform::suspend_failed without a thread.
    virtual uint32_t suspend();
    virtual uint32_t resume_thread();
    virtual int get_priority();
    virtual void set_priority(int priority);
    // To the thread's own queue; never blocks, keeps order. Without a thread the message is dropped.
    virtual void post_message(uint32_t message, uint64_t wparam, uint64_t lparam);
    virtual void run() = 0;
    // Gives the handle up; whoever comes second (the thread at its end, or `stop`) finds it released already.
    virtual void release_handle();
    virtual ~kel_thread();

    // 1 from the moment the body starts until it returns.
    uint32_t is_running() const { return running; }
    bool has_thread();
    uint32_t id() const { return thread_id; }

  protected:
    // On the thread: the body threw. Says so; the thread then ends as if the body had returned.
    virtual void failed(const char *reason);

    uint32_t grace_ms = 5000; // before the thread is ended by force

  private:
    static void thread_entry(void *object);
    platform::thread_handle current_thread();

    std::mutex handle_mutex;
    platform::thread_handle thread;
    // The same thread until the next one is created: between giving its handle up and its end, the thread
    // still touches this object, so a stop waits for it then, too.
    platform::thread_handle last_thread;
    std::atomic<uint32_t> thread_id{0}; // 0 without a thread
    std::atomic<uint32_t> running{0};
};
