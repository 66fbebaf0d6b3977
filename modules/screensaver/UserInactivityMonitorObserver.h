#pragma once

#include <cstdint>

// The two reports of the monitor.
enum class UserActivityEvent : std::int32_t { Active = 1, Inactive = 2 };

// An observer of a UserInactivityMonitor. The monitor's thread calls it, one event at a time.
class UserInactivityMonitorObserver {
public:
    // The user has become active or inactive. An exception that leaves this function is logged and ends the monitor
    // permanently.
    virtual void notify(const UserActivityEvent& event) = 0;
    virtual ~UserInactivityMonitorObserver() noexcept(false) = default;
};
