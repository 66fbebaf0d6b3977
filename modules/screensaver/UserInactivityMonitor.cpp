#include "modules/screensaver/UserInactivityMonitor.h"

#include "modules/screensaver/UserInactivityMonitorException.h"

namespace {

// The stop event is the second handle of every wait.
constexpr DWORD STOPPED = WAIT_OBJECT_0 + 1;

// An event of the power manager; the handle is null if the panel lacks the event.
struct NamedEvent {
    explicit NamedEvent(const wchar_t* name) : handle(OpenEventW(EVENT_ALL_ACCESS, FALSE, name)) {}
    NamedEvent(const NamedEvent&) = delete;
    NamedEvent& operator=(const NamedEvent&) = delete;
    ~NamedEvent() {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }

    const HANDLE handle;
};

} // namespace

UserInactivityMonitor::UserInactivityMonitor()
    : MonitorThread([](MonitorThread& self) { return static_cast<UserInactivityMonitor&>(self).watch(); },
                    [](const wchar_t* message) { throw UserInactivityMonitorException(message); }) {
    createEvents();
}

void UserInactivityMonitor::setTimeout(std::uint32_t milliseconds) {
    timeout = milliseconds;
}

void UserInactivityMonitor::addObserver(UserInactivityMonitorObserver* observer) {
    observers.add(observer);
}

void UserInactivityMonitor::removeObserver(UserInactivityMonitorObserver* observer) {
    observers.remove(observer);
}

DWORD UserInactivityMonitor::watch() {
    const NamedEvent active(L"PowerManager/UserActivity_Active");
    const NamedEvent inactive(L"PowerManager/UserActivity_Inactive");
    // Without these events the monitor gives up without a report.
    if (active.handle == nullptr || inactive.handle == nullptr) {
        return 0;
    }
    running = true;
    const auto waitFor = [this](const NamedEvent& event, DWORD milliseconds) {
        const HANDLE awaited[] = {event.handle, stopEvent};
        return WaitForMultipleObjects(2, awaited, FALSE, milliseconds);
    };
    // WAIT_TIMEOUT means that the power manager has reported inactivity and no activity has followed in time.
    const auto waitForInactivity = [&] {
        return waitFor(inactive, INFINITE) == STOPPED ? STOPPED : waitFor(active, timeout);
    };
    // The owner may set another time-out as soon as `start` has returned.
    const DWORD firstTimeout = timeout;
    const bool isActive = WaitForSingleObject(active.handle, 0) != WAIT_TIMEOUT;
    if (isActive) {
        // This report comes before `start` returns: later it could undo what the owner does next.
        notify(UserActivityEvent::Active);
    }
    tellDecision();
    DWORD woken = isActive ? waitForInactivity() : waitFor(active, firstTimeout);
    // A failed wait counts as activity: the screen should rather stay bright.
    while (woken != STOPPED) {
        if (woken == WAIT_TIMEOUT) {
            notify(UserActivityEvent::Inactive);
            if (waitFor(active, INFINITE) == STOPPED) {
                break;
            }
        }
        notify(UserActivityEvent::Active);
        woken = waitForInactivity();
    }
    // Deliberate: an exception skips this line, so a monitor that failed is not started again.
    running = false;
    return 1;
}

void UserInactivityMonitor::notify(UserActivityEvent event) {
    observers.notify([=](UserInactivityMonitorObserver& observer) { observer.notify(event); });
}
