#include "modules/screensaver/UserInactivityMonitor.h"

#include "OrvaUtils/Teardown.h"
#include "modules/screensaver/UserInactivityMonitorException.h"

#include <utility>

namespace {

constexpr DWORD STOPPED = WAIT_OBJECT_0 + 1;

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

bool UserInactivityMonitor::isStuck() const {
    return running && thread.isOpen();
}

DWORD UserInactivityMonitor::run() {
    if (running || !openActivityEvents()) {
        return 0;
    }
    running = true;
    const DWORD firstTimeout = timeout; // before the owner can set another
    DWORD woken = waitForActivity(0);
    if (woken == WAIT_TIMEOUT) {
        thread.ready();
        woken = waitForActivity(firstTimeout);
    } else if (woken != STOPPED) {
        // Before the start returns: later it could undo what the owner does next.
        notify(UserActivityEvent::Active);
        thread.ready();
        woken = waitForInactivity();
    }
    // A failed wait counts as activity: the screen rather stays bright.
    while (woken != STOPPED) {
        if (woken == WAIT_TIMEOUT) {
            notify(UserActivityEvent::Inactive);
            if (waitForActivity(INFINITE) == STOPPED) {
                break;
            }
        }
        notify(UserActivityEvent::Active);
        woken = waitForInactivity();
    }
    running = false; // deliberately not after an exception: a monitor that failed is not started again
    return 1;
}

bool UserInactivityMonitor::openActivityEvents() {
    closeActivityEvents();
    activeEvent = OpenEventW(EVENT_ALL_ACCESS, FALSE, L"PowerManager/UserActivity_Active");
    inactiveEvent = OpenEventW(EVENT_ALL_ACCESS, FALSE, L"PowerManager/UserActivity_Inactive");
    return activeEvent != nullptr && inactiveEvent != nullptr;
}

DWORD UserInactivityMonitor::waitForActivity(DWORD milliseconds) const {
    const HANDLE events[] = {activeEvent, thread.stopEvent()};
    return WaitForMultipleObjects(2, events, FALSE, milliseconds);
}

// WAIT_TIMEOUT: the power manager has reported inactivity, and no activity has followed in time.
DWORD UserInactivityMonitor::waitForInactivity() const {
    const HANDLE events[] = {inactiveEvent, thread.stopEvent()};
    if (WaitForMultipleObjects(2, events, FALSE, INFINITE) == STOPPED) {
        return STOPPED;
    }
    return waitForActivity(timeout);
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
