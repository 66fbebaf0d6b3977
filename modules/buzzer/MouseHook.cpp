#include "modules/buzzer/MouseHook.h"

#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"
#include "modules/buzzer/BuzzerException.h"

#include <iterator>
#include <utility>

namespace {

constexpr DWORD STOP_LIMIT = 20000; // ms
constexpr DWORD STOP_LIMIT_OF_INPUT = 100; // ms: when input waits, too
constexpr DWORD LOOK_AGAIN = 10; // ms
constexpr DWORD STOPPED = WAIT_OBJECT_0 + 1;

HHOOK hook = nullptr;
// Null before and after the instance's life. Auto-reset: presses without a waiting thread are merged.
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
    Logger::instance(); // to be destroyed later than this: the threads that are left may write to it
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
    lists = new std::list<Observers>;
    publish({});
}

// The stop event stays open, and the observers' list stays: the threads that are left use them until the process ends.
MouseHook::~MouseHook() noexcept(false) {
    uninstall();
    CloseHandle(touchEvent.exchange(nullptr));
    stopThread();
}

bool MouseHook::install() {
    if (hook != nullptr) {
        return false;
    }
    hook = SetWindowsHookExW(WH_MOUSE_LL, hookProcedure, GetModuleHandleW(nullptr), 0);
    if (hook == nullptr) {
        return false;
    }
    startThread();
    return true;
}

bool MouseHook::uninstall() {
    if (hook != nullptr && !UnhookWindowsHookEx(hook)) {
        stopThread();
        return false;
    }
    hook = nullptr;
    stopThread();
    return true;
}

// The code is deliberately not looked at.
LRESULT CALLBACK MouseHook::hookProcedure(int code, WPARAM wParam, LPARAM lParam) {
    const HANDLE event = touchEvent;
    if (event != nullptr && (wParam == WM_LBUTTONDOWN || wParam == WM_RBUTTONDOWN)) {
        EventModify(event, EVENT_SET);
    }
    return CallNextHookEx(hook, code, wParam, lParam);
}

void MouseHook::startThread() {
    if (!running) {
        if (thread != nullptr && thread != INVALID_HANDLE_VALUE) {
            CloseHandle(thread); // the thread of the installation before this goes on without it
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
    if (WaitForSingleObject(thread, STOP_LIMIT) == WAIT_TIMEOUT) {
        throw BuzzerException(L"Failed to terminate monitor thread");
    }
    thread = INVALID_HANDLE_VALUE;
}

DWORD WINAPI MouseHook::entry(LPVOID self) {
    try {
        return static_cast<MouseHook*>(self)->watch();
    } catch (const OrvaUtils::Exception& exception) {
        Logger::instance().write(exception.message(), LogLevel::Error);
    } catch (...) {
        Logger::instance().write(L"Generic exception", LogLevel::Error);
    }
    return 0;
}

// A wait that fails counts as a touch; without its event the hook is gone, and the process about to be.
DWORD MouseHook::watch() {
    const HANDLE events[] = {touchEvent, stopEvent};
    while (WaitForMultipleObjects(2, events, FALSE, INFINITE) != STOPPED && touchEvent != nullptr) {
        notifyAll();
    }
    return 0;
}

void MouseHook::notifyAll() {
    struct Pass {
        explicit Pass(std::atomic<int>& countOfPasses) : count(countOfPasses) {
            ++count;
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass() {
            --count;
        }
        std::atomic<int>& count;
    };
    const Pass pass(passes); // first: whoever sees none afterwards knows that no thread has a former list
    const Observers present = *current.load();
    for (MouseHookObserver* observer : present) {
        int value = 0;
        observer->notify(value);
    }
}

void MouseHook::addObserver(MouseHookObserver* observer) {
    Observers changed = lists->back();
    changed.push_back(observer);
    publish(std::move(changed));
    dropFormerLists();
}

void MouseHook::removeObserver(MouseHookObserver* observer) {
    Observers changed = lists->back();
    std::erase(changed, observer);
    publish(std::move(changed));
    const DWORD limit = hook == nullptr ? STOP_LIMIT : STOP_LIMIT_OF_INPUT;
    for (DWORD waited = 0; passes != 0 && waited < limit; waited += LOOK_AGAIN) {
        Sleep(LOOK_AGAIN);
    }
    dropFormerLists();
}

void MouseHook::publish(Observers changed) {
    lists->push_back(std::move(changed));
    current = &lists->back();
}

void MouseHook::dropFormerLists() {
    if (passes == 0) {
        lists->erase(lists->begin(), std::prev(lists->end()));
    }
}
