#pragma once

#include "modules/ObserverList.h"
#include "modules/buzzer/MouseHookObserver.h"

#include <windows.h>

// The mouse hook of the process: it notifies observers of touches, which are presses of the left or right button
// [dn529147]. Moves and releases do not count.
//
// Threads: the platform calls the hook procedure on the thread that installed the hook, inside its GetMessageW, and
// holds back input meanwhile. The procedure only sets an auto-reset event, so an observer never delays input. A
// notification thread waits for the event and calls every observer once. Presses that come while no notification thread
// waits are merged into one more notification. Only the main thread calls the operations below.
//
// Deliberate: a notification thread never ends, even when the hook is removed. Each installation adds a thread. All
// threads wait for the same event, and a press wakes one of them.
class MouseHook {
public:
    // Returns the one object of the process. The program makes the first call before everything else; it creates the
    // events. Process exit destroys the object. Throws OrvaUtils::Exception "Cannot create events for mouse hook".
    static MouseHook& instance();

    MouseHook(const MouseHook&) = delete;
    MouseHook& operator=(const MouseHook&) = delete;

    // Installs the hook and starts a notification thread. Returns false, and starts no thread, if a hook is installed
    // already or the platform cannot install a hook; the platform has room for one hook. If CreateThread fails, the
    // hook stays installed without a new thread.
    bool install();
    // Removes the hook. Returns true even if no hook is installed. Returns false if the platform fails to remove the
    // hook: the hook then stays installed.
    bool uninstall();

    // Adds an observer, which is not owned. It may be in the list already.
    void addObserver(MouseHookObserver* observer);
    // Removes an observer and waits until no notification can still call it, so that the observer can be deleted. An
    // observer must not call this during its own notification.
    //
    // The wait lasts 20000 ms at most, and 100 ms while a hook is installed, because input waits for this thread then.
    // After a time-out, a notification inside the observer continues, so it must not use the observer's data any more.
    // A notification that is just about to call the observer may call it although it is gone.
    void removeObserver(MouseHookObserver* observer);

private:
    MouseHook();
    ~MouseHook() noexcept(false);

    static LRESULT CALLBACK hookProcedure(int code, WPARAM wParam, LPARAM lParam);
    static DWORD WINAPI entry(LPVOID self);
    DWORD watch();
    void startThread();
    void stopThread();

    ObserverList<MouseHookObserver>* observers = nullptr; // never deleted: the threads outlive this object
    bool running = false; // deliberately never set: see above
    HANDLE thread = nullptr; // the last one; INVALID_HANDLE_VALUE after it was stopped
    HANDLE stopEvent = nullptr; // auto-reset
};
