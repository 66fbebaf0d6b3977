#pragma once

// An observer of touches. Register it with MouseHook::addObserver.
//
// A touch thread of the hook calls it. After more than one installation there are several such threads, so two
// notifications can run at the same time: an observer must allow that.
class MouseHookObserver {
public:
    // A touch has happened. `value` is always 0. An exception that leaves this function is logged and ends that
    // touch thread.
    virtual void notify(int& value) = 0;
    virtual ~MouseHookObserver() = default;
};
