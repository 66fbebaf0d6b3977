#pragma once

#include "modules/MonitorThread.h"
#include "modules/ObserverList.h"
#include "modules/screensaver/UserInactivityMonitorObserver.h"

#include <atomic>
#include <cstdint>

// Watches, on a thread of its own, whether the user touches the panel, and tells its observers.
//
// The power manager has two named events, one of them always set: "PowerManager/UserActivity_Active" and
// "PowerManager/UserActivity_Inactive" [ms890502]. The user counts as inactive when the first one stays unset for the
// time-out after the second one was set (or after the start), and as active again as soon as it is set. A panel without
// these events is never reported on. The thread begins with a look at the first event that takes no time: a user who is
// active when it starts is reported before the start returns, which an observer that takes its time delays.
//
// Observers are added before the start and removed after the stop (ObserverList); `setTimeout` may be called at any
// time. Its failures are UserInactivityMonitorExceptions. After a stop it can be started again.
class UserInactivityMonitor : public MonitorThread {
public:
    // Throws "Cannot create event".
    UserInactivityMonitor();
    ~UserInactivityMonitor() noexcept(false) {
        stopAtEnd();
    }

    // 60000 at first. A wait that has begun goes on as it is; the first one begins with the start.
    void setTimeout(std::uint32_t milliseconds);

    void addObserver(UserInactivityMonitorObserver* observer);
    void removeObserver(UserInactivityMonitorObserver* observer);

private:
    DWORD watch();
    void notify(UserActivityEvent event);

    std::atomic<std::uint32_t> timeout = 60000;
    ObserverList<UserInactivityMonitorObserver> observers;
};
