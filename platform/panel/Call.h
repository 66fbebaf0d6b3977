// A guard for calls of the simulation's own interface (Driver.h, Client.h, Operator.h).
#pragma once

#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Scheduler.h"

namespace panel {

// Holds the kernel's lock while it lives. The destructor leaves the lock and wakes the threads that the call released.
// The constructor throws std::runtime_error if this process has not joined a panel.
class Call {
public:
    Call() : image(Runtime::instance().image()), self(Runtime::instance().thread().slot), lock(image) {}
    ~Call() {
        lock.release();
        scheduler::deliverWakes(image);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    Image& image;
    const Slot self; // the calling thread
    Lock lock;
};

} // namespace panel
