// The debugger's window beside the main one.
#include "platform/desktop/debugger_window.h"
#include "platform/desktop/desktop_window_parts.h"

namespace platform {

void desktop_window::show_debugger(debugger_listener *hears, const std::string &layout) {
    // It may be what asks for that.
    if (debugger != nullptr) {
        debugger->hide();
        debugger.release()->deleteLater();
    }
    if (gone || hears == nullptr) return;
    debugger = std::make_unique<debugger_window>(*hears, layout);
    debugger->setWindowIcon(frame->windowIcon());
    debugger->show();
    debugger->look();
}

void desktop_window::debugger_changed(bool stopped) {
    if (debugger == nullptr) return;
    debugger->look();
    if (stopped) debugger->come_to_front();
}

std::string desktop_window::debugger_layout() const {
    return debugger != nullptr ? debugger->layout() : std::string();
}

} // namespace platform
