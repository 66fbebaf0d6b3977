// How a thread waits. Wants the lock held; holds it again on return.
#pragma once

#include "platform/panel/Functions.h"
#include "platform/panel/kernel/Lock.h"

#include <string>

namespace panel {

// Set when this process has ended on the panel, while the host still runs its exit handlers: its other threads go on no
// more. Whoever enters or leaves a platform call then stops here for ever.
extern std::atomic<bool> processEnded;
[[noreturn]] void standStill();
// This thread has ended the process, and runs on only for the host's clean-up: it must not stand still.
extern thread_local bool endsProcess;

// A call of the platform that has not returned yet.
struct PlatformCall {
    Function function;
    std::uint32_t number; // how many-th of this function in this thread
    std::string arguments;
    const PlatformCall* outer; // whose callback has made this one

    std::string text() const; // "Sleep[1](1000)"
};
// This thread's innermost one; null: it is in none. The gate keeps it, a wait tells it to who watches the panel.
extern thread_local const PlatformCall* currentCall;

// The thread's wait fields (kind, objects, key) are set; sleeps until it is released or the deadline (panel time) has
// come, and answers the wait's result. Lets the programs begin that this thread has started.
std::uint32_t block(Lock& lock, Image& image, Slot thread, std::uint64_t deadline);

// A wait for the time alone; the thread goes on at once if it is 0.
void sleepFor(Image& image, Slot thread, std::uint32_t milliseconds); // takes the lock itself

// A wait for so many objects, none of which is invalid. The platform's wait result.
std::uint32_t waitForObjects(Lock& lock, Image& image, Slot thread, const Slot* waited, std::uint32_t count,
                             std::uint32_t milliseconds);

} // namespace panel
