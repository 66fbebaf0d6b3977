// Calls of a program's window procedures, on the thread that made the window.
#pragma once

#include "platform/panel/Gate.h"
#include "platform/panel/kernel/Messages.h"

namespace panel {

// Calls the procedure of a window of this thread; 0 if there is none by now, or it is another thread's. Without the
// lock.
LRESULT callWindow(Gate& gate, std::uint32_t window, UINT message, std::uint64_t wParam, std::int64_t lParam);

// Calls the mouse hook's procedure for an event that was sent to this thread; 0 if the hook is gone. Without the lock.
LRESULT callHook(Gate& gate, const messages::Message& sent);

} // namespace panel
