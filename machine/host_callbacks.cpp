#include "machine/kiv_machine.h"

namespace {

sound_listener current_listener = {
    [] {}, [] {}, [](uint16_t, uint32_t) {}, [](uint32_t) {}, [] {}, [] {},
};

} // namespace

void host_callbacks_init() { static_cast<sound_listener &>(machine) = current_listener; }

void host_callbacks_listen(const sound_listener &listener) {
    current_listener = listener;
    host_callbacks_init();
}
