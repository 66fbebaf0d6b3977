// The one lock of the kernel file: a futex word that names its owner by host thread id and start time, so that whoever
// waits for it can see that the owner has died, also when its id was given to somebody else, and take it over. Not
// recursive.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel {

class Lock {
public:
    explicit Lock(Image& guarded) : image(guarded), word(guarded.lock) {
        acquire();
    }
    // Gives up after so many real milliseconds; see isHeld.
    Lock(Image& guarded, std::uint32_t milliseconds) : image(guarded), word(guarded.lock) {
        tryFor(milliseconds);
    }
    ~Lock() {
        release();
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void acquire();
    void release(); // nothing if it is not held
    bool isHeld() const {
        return held;
    }

    // What the word holds while this thread has the lock.
    static std::uint32_t nameOf(std::int32_t threadId);

private:
    bool tryFor(std::uint32_t milliseconds);

    Image& image;
    std::atomic<std::uint32_t>& word;
    bool held = false;
};

} // namespace panel
