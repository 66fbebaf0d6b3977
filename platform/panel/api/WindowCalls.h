// Calls of a program's window procedures, on the thread that made the window.
#pragma once

#include "platform/panel/Gate.h"

namespace panel {

// Calls the procedure of a window of this thread; 0 if there is none by now, or it is another thread's. Without the
// lock.
LRESULT callWindow(Gate& gate, std::uint32_t window, UINT message, std::uint64_t wParam, std::int64_t lParam);

} // namespace panel
