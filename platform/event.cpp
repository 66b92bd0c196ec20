#include "platform/event.h"

#include "platform/thread.h"
#include <chrono>
#include <condition_variable>
#include <map>

namespace platform {

struct event::shared_state {
    std::mutex mutex;
    std::condition_variable changed;
    bool signalled = false;
};

namespace {

// Never destroyed: threads may still close events while the process ends.
template <class State> struct name_registry {
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<State>> events;
};

} // namespace

// The state of that name, made when `make`; null when there is none.
std::shared_ptr<event::shared_state> event::named_state(const std::string &name, bool make) {
    static auto &registry = *new name_registry<shared_state>;
    forced_end_deferral deferral;
    std::lock_guard lock(registry.mutex);
    std::erase_if(registry.events, [](const auto &entry) { return entry.second.expired(); });
    const auto found = registry.events.find(name);
    if (found != registry.events.end()) {
        if (auto existing = found->second.lock()) return existing;
    }
    if (!make) return nullptr;
    auto made = std::make_shared<shared_state>();
    registry.events[name] = made;
    return made;
}

event event::create(const std::string &name) {
    event e;
    e.state = name.empty() ? std::make_shared<shared_state>() : named_state(name, true);
    return e;
}

event event::open(const std::string &name) {
    event e;
    if (!name.empty()) e.state = named_state(name, false);
    return e;
}

void event::signal() {
    if (!state) return;
    forced_end_deferral deferral;
    std::lock_guard lock(state->mutex);
    state->signalled = true;
    state->changed.notify_one();
}

void event::reset() {
    if (!state) return;
    forced_end_deferral deferral;
    std::lock_guard lock(state->mutex);
    state->signalled = false;
}

bool event::wait(uint32_t milliseconds) {
    const std::shared_ptr<shared_state> waited = state; // outlives a close by whoever is released
    if (!waited) return false;
    forced_end_deferral deferral;
    std::unique_lock lock(waited->mutex);
    const auto is_signalled = [&] { return waited->signalled; };
    if (milliseconds == wait_forever)
        waited->changed.wait(lock, is_signalled);
    else if (!waited->changed.wait_until(
                 lock, std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds),
                 is_signalled))
        return false;
    waited->signalled = false;
    return true;
}

} // namespace platform
