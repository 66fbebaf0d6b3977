#pragma once

#include <windows.h>

#include <atomic>
#include <string>

// A black window that covers the whole screen. It also hides the cursor while it is shown.
//
// Threads: construct the object and call `create` on a thread with a message loop. Any thread may call `show`, `hide`
// and `destroy`: they post a message to the window, do nothing without a window, and report nothing if the post fails.
// The thread of the window does the rest when it handles the message.
class BlackScreen {
public:
    // Registers the window class. Only the first object of the process does so: later objects ignore the arguments.
    // Throws BlackScreenException "Cannot register class".
    BlackScreen(HINSTANCE instance, const std::wstring& className);
    BlackScreen(const BlackScreen&) = delete;
    BlackScreen& operator=(const BlackScreen&) = delete;
    // Does the same as `destroy`.
    ~BlackScreen();

    // Creates the window, which is hidden at first. Throws BlackScreenException "Cannot create black screen window".
    void create();
    // Shows the window and decrements the display count of the cursor.
    void show();
    // Hides the window and increments the display count of the cursor, even if the window is hidden already.
    void hide();
    // Hides and destroys the window.
    void destroy();

private:
    void post(UINT message);

    std::atomic<HWND> window = nullptr;
};
