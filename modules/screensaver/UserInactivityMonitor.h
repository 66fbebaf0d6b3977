#pragma once

#include "modules/MonitorThread.h"
#include "modules/screensaver/UserInactivityMonitorObserver.h"

#include <atomic>
#include <cstdint>
#include <vector>

// Watches, on a thread of its own, whether the user touches the panel, and tells its observers.
//
// The power manager has two named events, one of them always set: "PowerManager/UserActivity_Active" and
// "PowerManager/UserActivity_Inactive" [ms890502]. The user counts as inactive when the first one stays unset for the
// time-out after the second one was set (or after the start), and as active again as soon as it is set. A panel without
// these events is never reported on. The thread begins with a look at the first event that takes no time: a user who is
// active when it starts is reported before the start returns, which an observer that takes its time delays.
//
// Its owner calls `start`, `stop` and the destructor on one thread, adds observers before the start and removes them
// after the stop. `setTimeout` may be called at any time.
class UserInactivityMonitor : MonitorThread::Loop {
public:
    // Throws UserInactivityMonitorException "Cannot create event".
    UserInactivityMonitor();
    UserInactivityMonitor(const UserInactivityMonitor&) = delete;
    UserInactivityMonitor& operator=(const UserInactivityMonitor&) = delete;
    // Stops, and throws as `stop` does; a monitor that is stuck should rather stay.
    ~UserInactivityMonitor() noexcept(false);

    // 60000 at first. A wait that has begun goes on as it is; the first one begins with the start.
    void setTimeout(std::uint32_t milliseconds);

    // Observers are not owned and hear each event in the order of their registration, as often as they were added.
    void addObserver(UserInactivityMonitorObserver* observer);
    // As often as it was added.
    void removeObserver(UserInactivityMonitorObserver* observer);

    // False when it runs already. Returns when the thread watches, or has given up for lack of the platform's events.
    // A thread that the platform does not make is not missed.
    bool start();
    // Waits for the thread, at most 20000 ms; throws UserInactivityMonitorException "Failed to terminate monitor
    // thread" if that is not enough, and can be called again.
    void stop();
    // After a `stop` that threw: the thread still uses the monitor and what observes it.
    bool isStuck() const;

private:
    DWORD run() override;
    bool openActivityEvents();
    DWORD waitForActivity(DWORD milliseconds) const;
    DWORD waitForInactivity() const;
    void notify(UserActivityEvent event) const;
    void closeActivityEvents();

    std::atomic<std::uint32_t> timeout = 60000;
    std::vector<UserInactivityMonitorObserver*> observers;
    std::atomic<bool> running = false; // set and cleared by the thread
    HANDLE activeEvent = nullptr; // both opened by the thread, closed after its end
    HANDLE inactiveEvent = nullptr;
    MonitorThread thread;
};
