#pragma once

#include "modules/MonitorThread.h"
#include "modules/ObserverList.h"
#include "modules/screensaver/UserInactivityMonitorObserver.h"

#include <atomic>
#include <cstdint>

// The monitor of user activity: a thread that tells its observers when the user becomes inactive and active.
//
// The power manager has two named events, one of which is always set: "PowerManager/UserActivity_Active" and
// "PowerManager/UserActivity_Inactive" [ms890502]. The user is inactive when the first event stays unset for the
// time-out after the second event was set. The user is active as soon as the first event is set. The monitor may report
// activity several times in a row. If the panel lacks these events, the monitor reports nothing.
//
// At its start the thread looks at the first event. If the user is active, it reports that before `start` returns, so a
// slow observer delays `start`. If the user is not active, the time-out begins with the start.
//
// Add observers before `start` and remove them after `stop`. Any thread may call `setTimeout` at any time. Failures
// throw UserInactivityMonitorException. After a `stop` the monitor can be started again.
class UserInactivityMonitor : public MonitorThread {
public:
    // Throws "Cannot create event".
    UserInactivityMonitor();
    ~UserInactivityMonitor() noexcept(false) {
        stopAtEnd();
    }

    // Sets the time-out, which is 60000 ms at first. A wait in progress keeps its time-out. The first wait counts as in
    // progress when `start` returns.
    void setTimeout(std::uint32_t milliseconds);

    // Adds an observer, which is not owned.
    void addObserver(UserInactivityMonitorObserver* observer);
    // Removes all registrations of an observer.
    void removeObserver(UserInactivityMonitorObserver* observer);

private:
    DWORD watch();
    void notify(UserActivityEvent event);

    std::atomic<std::uint32_t> timeout = 60000;
    ObserverList<UserInactivityMonitorObserver> observers;
};
