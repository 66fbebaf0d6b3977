#pragma once

#include <windows.h>

namespace indev {

// A handler of any window message of a MessageOnlyWindow.
//
// The window calls the handler on the thread of its message loop and does not own it. The destructor is deliberately
// the first virtual function here, but the last one in IPCMessageHandler.
class MESSAGEHANDLER {
public:
    virtual ~MESSAGEHANDLER() = default;
    // Handles one message. The result becomes the result of the window procedure.
    virtual LRESULT handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) = 0;
};

} // namespace indev
