#pragma once

#include "modules/ObserverList.h"
#include "modules/buzzer/MouseHookObserver.h"

#include <windows.h>

// The process's ear for touches: a low-level mouse hook [dn529147]. Each press of the pointer's left or right button
// makes a notification thread call every observer once; presses that come while none of these threads waits are merged
// into one more call. Moves and releases count for nothing.
//
// The hook procedure runs on the thread that installed the hook, inside its GetMessageW, while the platform's input
// waits. It sets an event and nothing else, so that an observer never delays input.
//
// Deliberate: a notification thread is never told to end, not even when the hook is removed. Each installation adds one
// thread, all of them wait for the same event, and a press wakes one of them.
//
// There is one instance a process. For the main thread only; the notification threads use nothing of it but the events
// and the observers (ObserverList).
class MouseHook {
public:
    // Made at the first call, which is the program's first act, and destroyed at the process's exit. Throws
    // OrvaUtils::Exception "Cannot create events for mouse hook".
    static MouseHook& instance();

    MouseHook(const MouseHook&) = delete;
    MouseHook& operator=(const MouseHook&) = delete;

    // False when a hook is installed already, or the platform refuses one (it has room for one alone); there is no new
    // thread then. If the platform does not make the thread, the hook stays installed without one.
    bool install();
    // True also without a hook. False when the platform does not remove it: it then stays, and stays installed.
    bool uninstall();

    void addObserver(MouseHookObserver* observer);
    // Then waits for notifications that can still call this observer, at most 20000 ms, so that it can be deleted; so
    // no observer may do this while it is notified. While a hook is installed, input waits for this thread: it then
    // waits 100 ms at most. An observer that takes longer must be through with its own data; one whose notification has
    // only begun then is called though it may be gone.
    void removeObserver(MouseHookObserver* observer);

private:
    MouseHook();
    ~MouseHook() noexcept(false);

    static LRESULT CALLBACK hookProcedure(int code, WPARAM wParam, LPARAM lParam);
    static DWORD WINAPI entry(LPVOID self);
    DWORD watch();
    void startThread();
    void stopThread();

    ObserverList<MouseHookObserver>* observers = nullptr; // never deleted: threads outlive this
    bool running = false; // deliberately never set: see above
    HANDLE thread = nullptr; // the last one; INVALID_HANDLE_VALUE once it was stopped
    HANDLE stopEvent = nullptr; // auto-reset
};
