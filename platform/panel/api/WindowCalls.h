// Calls the program's window procedures and hook procedure. The caller must not hold the lock.
#pragma once

#include "platform/panel/Gate.h"
#include "platform/panel/kernel/Messages.h"

namespace panel {

// Calls the window procedure and returns its result. Returns 0 if the window no longer exists or belongs to another
// thread.
LRESULT callWindow(Gate& gate, std::uint32_t window, UINT message, std::uint64_t wParam, std::int64_t lParam);

// Calls the hook procedure for a mouse event that was sent to this thread. Returns 0 if the hook was removed meanwhile.
LRESULT callHook(Gate& gate, const messages::Message& sent);

} // namespace panel
