// Functions that block the calling thread. Unless a comment says otherwise, the caller holds the kernel's lock. The
// function releases the lock during the wait and holds it again when it returns.
#pragma once

#include "platform/panel/Functions.h"
#include "platform/panel/kernel/Lock.h"

#include <string>

namespace panel {

// True if this process has ended on the panel, but the host still runs its exit handlers. From then on a thread that
// begins or ends a platform call stops in `standStill` for ever, so that no other thread of the process continues.
extern std::atomic<bool> processEnded;
[[noreturn]] void standStill();
// True in the thread that has ended the process. This thread must not stop, since it runs the exit handlers.
extern thread_local bool endsProcess;

// A call of the platform that has not returned yet.
struct PlatformCall {
    Function function;
    std::uint32_t number; // number of the call of this function in this thread, from 1
    std::string arguments;
    const PlatformCall* outer; // the call whose callback has made this call; null: no such call

    std::string text() const; // "Sleep[1](1000)"
};
// The innermost platform call of this thread; null outside of calls. The gate sets it. A wait copies it to
// ThreadRecord::call for `panel ps`.
extern thread_local const PlatformCall* currentCall;

// Sleeps until the thread is released or the deadline (panel ms) has passed, and returns the result of the wait. The
// caller has set the wait fields of the thread's record (kind, objects, key). The programs that this thread has started
// begin now.
std::uint32_t block(Lock& lock, Image& image, Slot thread, std::uint64_t deadline);

// Sleeps for a panel time; returns at once for 0. Takes the lock itself.
void sleepFor(Image& image, Slot thread, std::uint32_t milliseconds);

// Waits until one of the objects is signalled. All of them must be valid. Returns the result of WaitForMultipleObjects.
std::uint32_t waitForObjects(Lock& lock, Image& image, Slot thread, const Slot* waited, std::uint32_t count,
                             std::uint32_t milliseconds);

} // namespace panel
