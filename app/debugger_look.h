// What a debugger's window shows of the machine, copied while it stands still.
#pragma once

#include "app/debug_session.h"
#include "platform/debugger.h"

void look_at_machine(debug_session &session, const platform::debugger_request &at,
                     platform::debugger_look &look);
