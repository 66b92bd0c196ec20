#define SDL_MAIN_HANDLED
#include "platform/desktop/gamepads.h"

#include "platform/host.h"
#include "support/log.h"
#include <SDL.h>

namespace platform {

namespace {

constexpr int pushed = 16000; // of 32767, that a stick is pushed to one side

// A stick's or a cross's side, of two axes.
uint32_t sides(int x, int y) {
    return (x < -pushed ? 1u << pad_left : 0) | (x > pushed ? 1u << pad_right : 0) |
           (y < -pushed ? 1u << pad_up : 0) | (y > pushed ? 1u << pad_down : 0);
}

uint32_t held_on(SDL_GameController *pad) {
    constexpr SDL_GameControllerButton buttons[pad_inputs] = {
        SDL_CONTROLLER_BUTTON_DPAD_UP,
        SDL_CONTROLLER_BUTTON_DPAD_DOWN,
        SDL_CONTROLLER_BUTTON_DPAD_LEFT,
        SDL_CONTROLLER_BUTTON_DPAD_RIGHT,
        SDL_CONTROLLER_BUTTON_A,
        SDL_CONTROLLER_BUTTON_B,
        SDL_CONTROLLER_BUTTON_X,
        SDL_CONTROLLER_BUTTON_Y,
        SDL_CONTROLLER_BUTTON_LEFTSHOULDER,
        SDL_CONTROLLER_BUTTON_RIGHTSHOULDER,
        SDL_CONTROLLER_BUTTON_BACK,
        SDL_CONTROLLER_BUTTON_START,
    };
    uint32_t held = sides(SDL_GameControllerGetAxis(pad, SDL_CONTROLLER_AXIS_LEFTX),
                          SDL_GameControllerGetAxis(pad, SDL_CONTROLLER_AXIS_LEFTY));
    for (uint32_t i = 0; i < pad_inputs; ++i)
        if (SDL_GameControllerGetButton(pad, buttons[i]) != 0) held |= 1u << i;
    return held;
}

// One that SDL knows no layout of: its first stick, its first cross, and its buttons in their order.
uint32_t held_on(SDL_Joystick *stick) {
    uint32_t held = 0;
    if (SDL_JoystickNumAxes(stick) >= 2)
        held |= sides(SDL_JoystickGetAxis(stick, 0), SDL_JoystickGetAxis(stick, 1));
    if (SDL_JoystickNumHats(stick) > 0) {
        const uint8_t hat = SDL_JoystickGetHat(stick, 0);
        held |= ((hat & SDL_HAT_UP) != 0 ? 1u << pad_up : 0) |
                ((hat & SDL_HAT_DOWN) != 0 ? 1u << pad_down : 0) |
                ((hat & SDL_HAT_LEFT) != 0 ? 1u << pad_left : 0) |
                ((hat & SDL_HAT_RIGHT) != 0 ? 1u << pad_right : 0);
    }
    for (int i = 0; i < SDL_JoystickNumButtons(stick) && pad_a + static_cast<uint32_t>(i) < pad_inputs; ++i)
        if (SDL_JoystickGetButton(stick, i) != 0) held |= 1u << (pad_a + static_cast<uint32_t>(i));
    return held;
}

} // namespace

std::mutex &sdl_start_mutex() {
    static std::mutex mutex;
    return mutex;
}

struct gamepads::pad {
    SDL_GameController *controller; // null: SDL knows no layout of it
    SDL_Joystick *stick;

    explicit pad(int index)
        : controller(SDL_IsGameController(index) ? SDL_GameControllerOpen(index) : nullptr),
          stick(controller != nullptr ? SDL_GameControllerGetJoystick(controller) : SDL_JoystickOpen(index)) {
    }
    ~pad() {
        if (controller != nullptr)
            SDL_GameControllerClose(controller);
        else if (stick != nullptr)
            SDL_JoystickClose(stick);
    }
    pad(const pad &) = delete;
    pad &operator=(const pad &) = delete;
    uint32_t held() const { return controller != nullptr ? held_on(controller) : held_on(stick); }
};

gamepads::gamepads() { look(); }

gamepads::~gamepads() {
    if (!started) return;
    pads.clear();
    const std::lock_guard lock(sdl_start_mutex());
    SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
}

// A sound device that is just being opened may take its time; then at the next look.
bool gamepads::start() {
    if (started) return true;
    const std::unique_lock lock(sdl_start_mutex(), std::try_to_lock);
    if (!lock) return false;
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1"); // SDL knows of no window of ours
    SDL_SetMainReady();
    started = SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER) == 0;
    if (!started) trace("gamepads: %s", SDL_GetError());
    return started;
}

void gamepads::look() {
    if (!start()) return;
    SDL_GameControllerUpdate();
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT); // nobody reads them
    for (int index = 0; index < SDL_NumJoysticks(); ++index) {
        const SDL_JoystickID id = SDL_JoystickGetDeviceInstanceID(index);
        if (id < 0 || pads.contains(id)) continue;
        auto one = std::make_unique<pad>(index);
        if (one->stick == nullptr) continue;
        trace("gamepads: %s", SDL_JoystickName(one->stick));
        pads.emplace(id, std::move(one));
    }
    bits = 0;
    std::erase_if(pads,
                  [](const auto &each) { return SDL_JoystickGetAttached(each.second->stick) == SDL_FALSE; });
    for (const auto &[id, each] : pads) bits |= each->held();
}

std::vector<std::string> gamepads::names() const {
    std::vector<std::string> all;
    for (const auto &[id, each] : pads) {
        const char *name = SDL_JoystickName(each->stick);
        all.emplace_back(name != nullptr ? name : "?");
    }
    return all;
}

} // namespace platform
