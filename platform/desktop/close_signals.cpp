// A signal handler may do next to nothing: this one adds to a counter of the kernel's.
#include "platform/desktop/close_signals.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int watched[] = {SIGINT, SIGTERM, SIGHUP};
struct sigaction former[std::size(watched)];

std::atomic<int> counter{-1};
static_assert(std::atomic<int>::is_always_lock_free, "the handler reads it");

void handle(int) {
    const int saved_errno = errno;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(counter, &one, sizeof one);
    errno = saved_errno;
}

} // namespace

close_signals::close_signals() {
    counter = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    for (size_t i = 0; i < std::size(watched); ++i) {
        sigaction(watched[i], nullptr, &former[i]);
        if (counter < 0 || former[i].sa_handler == SIG_IGN) continue;
        struct sigaction action {};
        action.sa_handler = handle;
        action.sa_flags = SA_RESTART;
        sigaction(watched[i], &action, nullptr);
    }
}

close_signals::~close_signals() {
    for (size_t i = 0; i < std::size(watched); ++i) sigaction(watched[i], &former[i], nullptr);
    if (counter >= 0) close(counter);
    counter = -1;
}

int close_signals::descriptor() const { return counter; }

void close_signals::take() {
    uint64_t signals;
    [[maybe_unused]] const ssize_t taken = read(counter, &signals, sizeof signals);
}

} // namespace platform
