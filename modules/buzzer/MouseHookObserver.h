#pragma once

// Hears from the MouseHook that somebody has touched the panel, on a notification thread of the hook. After a hook was
// installed more than once there is more than one such thread: a touch that comes while an observer is still busy with
// the one before then reaches it a second time at once.
class MouseHookObserver {
public:
    // The value is always 0. An exception that leaves it is logged and ends that notification thread.
    virtual void notify(int& value) = 0;
    virtual ~MouseHookObserver() = default;
};
