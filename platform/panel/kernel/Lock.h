// The lock of the kernel file: a guard that holds it while it lives.
//
// The lock is a futex word with the owner's host thread id and start time. A waiting thread can therefore see that the
// owner has died, even if the id was reused, and take the lock over. The lock is not recursive. Each release wakes the
// threads that watch the panel (Image::watched).
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel {

class Lock {
public:
    // Waits for the lock. With `--patience` (Patience.h) the process ends with a message when that time has passed. In
    // a program of the panel the calling thread stops for ever if the panel is off: no call has an effect after that.
    explicit Lock(Image& guarded) : image(guarded), word(guarded.lock) {
        acquire();
    }
    // Waits for at most `milliseconds` of real time. Call isHeld to learn whether the wait has succeeded.
    Lock(Image& guarded, std::uint32_t milliseconds) : image(guarded), word(guarded.lock) {
        tryFor(milliseconds);
    }
    ~Lock() {
        release();
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void acquire();
    void release(); // does nothing if the lock is not held
    bool isHeld() const {
        return held;
    }

    // True in the programs of the panel. Set it before the process has a second thread.
    static bool endsWithPower;

    // Returns the value of the word while this thread holds the lock.
    static std::uint32_t nameOf(std::int32_t threadId);

private:
    bool tryFor(std::uint32_t milliseconds);

    Image& image;
    std::atomic<std::uint32_t>& word;
    bool held = false;
};

} // namespace panel
