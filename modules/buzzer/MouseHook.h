#pragma once

#include "modules/buzzer/MouseHookObserver.h"

#include <windows.h>

#include <atomic>
#include <list>
#include <vector>

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
// There is one instance a process. For the main thread only; there is no lock: what the notification threads read of
// the observers is a list that nobody changes any more, and each change makes a new one.
class MouseHook {
public:
    // Made at the first call, which is the program's first act, and destroyed at the process's exit. Throws
    // OrvaUtils::Exception "Cannot create events for mouse hook".
    static MouseHook& instance();

    MouseHook(const MouseHook&) = delete;
    MouseHook& operator=(const MouseHook&) = delete;

    // False when a hook is installed already, or the platform refuses one (it has room for one alone); there is no new
    // thread then. A thread that the platform does not make is not missed.
    bool install();
    // True also without a hook. False when the platform does not remove it: it then stays, and stays installed.
    bool uninstall();

    // Observers are not owned and are called in the order of their registration, as often as they were added.
    void addObserver(MouseHookObserver* observer);
    // As often as it was added. It can be deleted afterwards: a notification that has begun is waited for, at most
    // 20000 ms; so no observer may do this while it is notified. With a hook that is still installed, input waits for
    // this thread: it then waits 100 ms at most, and an observer that takes longer must be through with its own data.
    void removeObserver(MouseHookObserver* observer);

private:
    using Observers = std::vector<MouseHookObserver*>;

    MouseHook();
    ~MouseHook() noexcept(false);

    static LRESULT CALLBACK hookProcedure(int code, WPARAM wParam, LPARAM lParam);
    static DWORD WINAPI entry(LPVOID self);
    DWORD watch();
    void notifyAll();
    void startThread();
    void stopThread();
    void publish(Observers changed);
    void dropFormerLists();

    // The last one is in force; former ones may still be in a thread's hands. Never destroyed: threads outlive this.
    std::list<Observers>* lists = nullptr;
    std::atomic<const Observers*> current;
    std::atomic<int> passes = 0; // notification threads that are calling observers
    bool running = false; // deliberately never set: see above
    HANDLE thread = nullptr; // the last one; INVALID_HANDLE_VALUE once it was stopped
    HANDLE stopEvent = nullptr; // auto-reset
};
