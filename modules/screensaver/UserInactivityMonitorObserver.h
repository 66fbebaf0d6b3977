#pragma once

#include <cstdint>

enum class UserActivityEvent : std::int32_t { Active = 1, Inactive = 2 };

// Hears from a UserInactivityMonitor, on its thread, one event at a time.
class UserInactivityMonitorObserver {
public:
    // An exception that leaves it is logged and ends the monitor for good.
    virtual void notify(const UserActivityEvent& event) = 0;
    virtual ~UserInactivityMonitorObserver() noexcept(false) = default;
};
