#pragma once

#include <windows.h>

namespace indev {

// Handles a message of a MessageOnlyWindow, on the thread of its loop; the result is the message's. The window does not
// own its handlers. (The destructor deliberately comes first here and last in IPCMessageHandler.)
class MESSAGEHANDLER {
public:
    virtual ~MESSAGEHANDLER() = default;
    virtual LRESULT handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) = 0;
};

} // namespace indev
