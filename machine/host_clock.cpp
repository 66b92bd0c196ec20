#include "machine/host_clock.h"

#include "machine/kiv_machine.h"
#include "platform/clock.h"
#include <ctime>

void use_host_clock() {
    calendar_ask([]() -> calendar_time {
        const platform::local_time now = platform::current_local_time();
        return {now.year, now.month, now.day, now.hour, now.minute, now.second};
    });
    z80_seed_from([] { return static_cast<unsigned>(std::time(nullptr)); });
}
