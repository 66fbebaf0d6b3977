// The one lock of the kernel file: a futex word that names its owner by host thread id, so that whoever waits for it
// can see that the owner has died, and take it over. Not recursive. Each release wakes those who watch the panel from
// outside (Image::watched).
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel {

class Lock {
public:
    explicit Lock(Image& guarded) : image(guarded), word(guarded.lock) {
        acquire();
    }
    ~Lock() {
        if (held)
            release();
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void acquire();
    void release();

private:
    void takeOver();

    Image& image;
    std::atomic<std::uint32_t>& word;
    bool held = false;
};

} // namespace panel
