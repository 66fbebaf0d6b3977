#pragma once

#include "modules/ObserverList.h"
#include "modules/buzzer/MouseHookObserver.h"

#include <windows.h>

// The mouse hook of the process: it notifies observers of touches. A touch is a press of the left or right button, not
// a move or a release. The id of the platform's documentation page on this hook is dn529147.
//
// Threads: the platform calls the hook procedure on the thread that installed the hook, inside GetMessageW, and holds
// back all input until the procedure returns. The procedure only sets an auto-reset event, so observers never delay
// input. A touch thread waits for the event and then calls every observer. If all touch threads are busy, the presses
// that arrive meanwhile cause a single further notification. Only the main thread may call the operations below.
//
// Deliberate: a touch thread runs until the process ends, even after the hook was removed. Each installation starts one
// more thread. All threads wait for the same event, and a press wakes one of them.
class MouseHook {
public:
    // Returns the single object of the process. The first call creates the object and its events; the program makes
    // this call at its very start. Process exit destroys the object. Throws OrvaUtils::Exception "Cannot create events
    // for mouse hook".
    static MouseHook& instance();

    MouseHook(const MouseHook&) = delete;
    MouseHook& operator=(const MouseHook&) = delete;

    // Installs the hook and starts a touch thread. Returns false, and starts no thread, if this object has
    // already installed the hook or SetWindowsHookExW fails, for example because another program has installed a hook.
    // If CreateThread fails, the hook stays installed without a new thread.
    bool install();
    // Removes the hook. Returns true even if no hook is installed. Returns false if UnhookWindowsHookEx fails; the hook
    // then stays installed.
    bool uninstall();

    // Adds an observer, which is not owned. If an observer is added twice, each notification calls it twice.
    void addObserver(MouseHookObserver* observer);
    // Removes all registrations of an observer and waits until no notification can call it any more. The observer can
    // then be deleted. An observer must not call this operation during its own notification.
    //
    // The wait has a time-out: 20000 ms without a hook, but only 100 ms while the hook is installed, because the
    // panel's input waits for the main thread meanwhile. After a time-out there are two risks. The observer's `notify`
    // may still be running on a touch thread: it must not use the observer's data from then on. A touch thread that is
    // about to call the observer may still call it, even if the observer has been deleted.
    void removeObserver(MouseHookObserver* observer);

private:
    MouseHook();
    ~MouseHook() noexcept(false);

    static LRESULT CALLBACK hookProcedure(int code, WPARAM wParam, LPARAM lParam);
    static DWORD WINAPI entry(LPVOID self);
    DWORD watch();
    void startThread();
    void stopThread();

    ObserverList<MouseHookObserver>* observers = nullptr; // never deleted, because the threads outlive this object
    bool running = false; // deliberately never set, so that no thread is stopped
    HANDLE thread = nullptr; // the thread of the last installation; null before it, or if CreateThread failed
    HANDLE stopEvent = nullptr; // auto-reset
};
