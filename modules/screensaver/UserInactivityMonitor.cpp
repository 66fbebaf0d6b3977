#include "modules/screensaver/UserInactivityMonitor.h"

#include "OrvaUtils/Teardown.h"
#include "modules/screensaver/UserInactivityMonitorException.h"

#include <utility>

namespace {

constexpr DWORD STOPPED = WAIT_OBJECT_0 + 1;

HANDLE openEvent(const wchar_t* name) {
    return OpenEventW(EVENT_ALL_ACCESS, FALSE, name);
}

DWORD waitForEither(HANDLE first, HANDLE second, DWORD milliseconds) {
    const HANDLE events[] = {first, second};
    return WaitForMultipleObjects(2, events, FALSE, milliseconds);
}

} // namespace

UserInactivityMonitor::UserInactivityMonitor() : thread(*this) {
    if (!thread.isUsable()) {
        throw UserInactivityMonitorException(L"Cannot create event");
    }
}

UserInactivityMonitor::~UserInactivityMonitor() noexcept(false) {
    OrvaUtils::Teardown steps;
    steps.run([this] { stop(); });
    closeActivityEvents();
    steps.finish();
}

void UserInactivityMonitor::setTimeout(std::uint32_t milliseconds) {
    timeout = milliseconds;
}

void UserInactivityMonitor::addObserver(UserInactivityMonitorObserver* observer) {
    observers.push_back(observer);
}

void UserInactivityMonitor::removeObserver(UserInactivityMonitorObserver* observer) {
    std::erase(observers, observer);
}

bool UserInactivityMonitor::start() {
    if (running) {
        return false;
    }
    thread.start();
    return true;
}

void UserInactivityMonitor::stop() {
    if (running && !thread.stop()) {
        throw UserInactivityMonitorException(L"Failed to terminate monitor thread");
    }
}

bool UserInactivityMonitor::begin() {
    if (running) {
        return false;
    }
    closeActivityEvents();
    activeEvent = openEvent(L"PowerManager/UserActivity_Active");
    inactiveEvent = openEvent(L"PowerManager/UserActivity_Inactive");
    running = activeEvent != nullptr && inactiveEvent != nullptr;
    return running;
}

// A failed wait counts as activity: the screen rather stays bright.
DWORD UserInactivityMonitor::run() {
    const HANDLE stopEvent = thread.stopEvent();
    DWORD woken = waitForEither(activeEvent, stopEvent, timeout);
    while (woken != STOPPED) {
        if (woken == WAIT_TIMEOUT) {
            notify(UserActivityEvent::Inactive);
            if (waitForEither(activeEvent, stopEvent, INFINITE) == STOPPED) {
                break;
            }
        }
        notify(UserActivityEvent::Active);
        if (waitForEither(inactiveEvent, stopEvent, INFINITE) == STOPPED) {
            break;
        }
        woken = waitForEither(activeEvent, stopEvent, timeout);
    }
    running = false; // deliberately not after an exception: a monitor that failed is not started again
    return 1;
}

void UserInactivityMonitor::notify(UserActivityEvent event) const {
    const std::vector<UserInactivityMonitorObserver*> present = observers; // one that is called may remove itself
    for (UserInactivityMonitorObserver* observer : present) {
        observer->notify(event);
    }
}

void UserInactivityMonitor::closeActivityEvents() {
    for (HANDLE* event : {&activeEvent, &inactiveEvent}) {
        if (*event != nullptr) {
            CloseHandle(std::exchange(*event, nullptr));
        }
    }
}
