// What a call of the simulation's own interface holds while it works: the lock; whom it has released is woken after it.
#pragma once

#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Scheduler.h"

namespace panel {

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
