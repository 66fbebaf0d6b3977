#pragma once

#include <windows.h>

#include <atomic>
#include <string>

// A black window that covers the whole screen, and hides the cursor while it is shown.
//
// `create` belongs on a thread with a message loop, which then does the showing, hiding and destroying; `show`, `hide`
// and `destroy`, for any thread, only post the request and do nothing while there is no window.
class BlackScreen {
public:
    // Registers the window class, once a process: for later objects the arguments do not matter. Throws
    // BlackScreenException "Cannot register class".
    BlackScreen(HINSTANCE instance, const std::wstring& className);
    BlackScreen(const BlackScreen&) = delete;
    BlackScreen& operator=(const BlackScreen&) = delete;
    ~BlackScreen(); // as `destroy`

    // Makes the window, hidden. Throws BlackScreenException "Cannot create black screen window".
    void create();
    void show();
    // Also of a window that is not shown; the cursor's count rises each time.
    void hide();
    // Hides, and lets the window's thread destroy it when it comes to it.
    void destroy();

private:
    void post(UINT message);

    std::atomic<HWND> window = nullptr;
};
