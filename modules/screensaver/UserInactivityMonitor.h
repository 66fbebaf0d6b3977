#pragma once

#include "modules/MonitorThread.h"
#include "modules/ObserverList.h"
#include "modules/screensaver/UserInactivityMonitorObserver.h"

#include <atomic>
#include <cstdint>

// The monitor of user activity: a thread that tells its observers when the user becomes inactive and active.
//
// The power manager has two named events, "PowerManager/UserActivity_Active" and "PowerManager/UserActivity_Inactive"
// [ms890502]. At any time one of the two is set. When the Inactive event is set, the time-out begins. If the Active
// event is set during the time-out, the monitor reports activity. Otherwise the monitor reports inactivity when the
// time-out has passed. Afterwards it reports activity as soon as the Active event is set. The monitor may therefore
// report activity several times in a row. If the panel lacks one of these events, the monitor reports nothing.
//
// When the thread starts, it first reads the state of the Active event. If this event is set, the thread reports
// activity before `start` returns, so a slow observer delays `start`. If the event is not set, the time-out begins at
// once.
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

    // Sets the time-out, which is 60000 ms at first. A new time-out does not change a wait that is in progress. If the
    // user is inactive when the thread starts, the first wait uses the time-out that was set before `start`.
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
