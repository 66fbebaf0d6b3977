#include "modules/buzzer/MouseHook.h"

#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"
#include "modules/KeepUntilProcessEnds.h"
#include "modules/RunThread.h"
#include "modules/buzzer/BuzzerException.h"

#include <atomic>

namespace {

constexpr DWORD THREAD_END_LIMIT = 20000; // ms
constexpr DWORD REMOVAL_LIMIT = 20000; // ms
// While the hook is installed, the platform's input waits for the main thread, so the limit is short (ms).
constexpr DWORD REMOVAL_LIMIT_WHILE_HOOKED = 100;
constexpr DWORD STOP_REQUESTED = WAIT_OBJECT_0 + 1;

// The hook procedure has no argument for its object, so these two variables belong to the process.
HHOOK hook = nullptr;
// Null before and after the life of the object. The event is auto-reset: presses without a waiting thread are merged.
std::atomic<HANDLE> touchEvent = nullptr;

HANDLE createEvent() {
    return CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

} // namespace

MouseHook& MouseHook::instance() {
    static MouseHook theOne;
    return theOne;
}

MouseHook::MouseHook() {
    // The log must exist first: process exit then closes it after this object.
    Logger::instance();
    observers = new ObserverList<MouseHookObserver>;
    // Touch threads that remain may still use the list while the process ends.
    keepUntilProcessEnds(observers);
    touchEvent = createEvent();
    stopEvent = createEvent();
    if (touchEvent == nullptr || stopEvent == nullptr) {
        for (const HANDLE event : {touchEvent.exchange(nullptr), stopEvent}) {
            if (event != nullptr) {
                CloseHandle(event);
            }
        }
        throw OrvaUtils::Exception(L"Cannot create events for mouse hook");
    }
}

// The stop event stays open: the remaining touch threads wait for it until the process ends.
MouseHook::~MouseHook() noexcept(false) {
    uninstall();
    CloseHandle(touchEvent.exchange(nullptr));
    stopThread();
}

bool MouseHook::install() {
    if (hook != nullptr) {
        return false;
    }
    // A thread id of 0 means touches of all programs.
    hook = SetWindowsHookExW(WH_MOUSE_LL, hookProcedure, GetModuleHandleW(nullptr), 0);
    if (hook == nullptr) {
        return false;
    }
    startThread();
    return true;
}

bool MouseHook::uninstall() {
    if (hook != nullptr && !UnhookWindowsHookEx(hook)) {
        // The hook stays installed and keeps its handle. A later call tries again.
        stopThread();
        return false;
    }
    hook = nullptr;
    stopThread();
    return true;
}

// The procedure deliberately ignores `code`.
LRESULT CALLBACK MouseHook::hookProcedure(int code, WPARAM wParam, LPARAM lParam) {
    const HANDLE event = touchEvent;
    if (event != nullptr && (wParam == WM_LBUTTONDOWN || wParam == WM_RBUTTONDOWN)) {
        EventModify(event, EVENT_SET);
    }
    return CallNextHookEx(hook, code, wParam, lParam);
}

void MouseHook::startThread() {
    // `running` is never set, so every installation starts a thread.
    if (!running) {
        if (thread != nullptr && thread != INVALID_HANDLE_VALUE) {
            // The thread of the previous installation continues without its handle.
            CloseHandle(thread);
        }
        thread = CreateThread(nullptr, 0, entry, this, 0, nullptr);
    }
}

void MouseHook::stopThread() {
    if (!running) {
        return;
    }
    EventModify(stopEvent, EVENT_SET);
    if (thread == INVALID_HANDLE_VALUE) {
        return;
    }
    if (WaitForSingleObject(thread, THREAD_END_LIMIT) == WAIT_TIMEOUT) {
        throw BuzzerException(L"Failed to terminate monitor thread");
    }
    thread = INVALID_HANDLE_VALUE;
}

DWORD WINAPI MouseHook::entry(LPVOID self) {
    return runThread([](LPVOID hookOfThread) { return static_cast<MouseHook*>(hookOfThread)->watch(); }, self);
}

// A failed wait counts as a touch. Without its event the hook object is gone and the process is about to end.
DWORD MouseHook::watch() {
    const HANDLE events[] = {touchEvent, stopEvent};
    while (WaitForMultipleObjects(2, events, FALSE, INFINITE) != STOP_REQUESTED && touchEvent != nullptr) {
        observers->notify([](MouseHookObserver& observer) {
            // The interface wants a reference; the value has no meaning.
            int value = 0;
            observer.notify(value);
        });
    }
    return 0;
}

void MouseHook::addObserver(MouseHookObserver* observer) {
    observers->add(observer);
}

void MouseHook::removeObserver(MouseHookObserver* observer) {
    observers->remove(observer);
    observers->waitForVisits(observer, hook == nullptr ? REMOVAL_LIMIT : REMOVAL_LIMIT_WHILE_HOOKED);
}
