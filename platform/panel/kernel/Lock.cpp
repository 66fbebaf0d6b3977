#include "platform/panel/kernel/Lock.h"

#include "platform/panel/kernel/Host.h"

#include <climits>

namespace panel {

namespace {

constexpr std::uint32_t sleepers = 0x80000000;
constexpr std::uint32_t patience = 50; // real ms after which a waiter looks whether the owner still lives

} // namespace

void Lock::acquire() {
    const auto me = static_cast<std::uint32_t>(host::threadId());
    std::uint32_t value = 0;
    if (word.compare_exchange_strong(value, me, std::memory_order_acquire)) {
        held = true;
        return;
    }
    // From here on the word is taken with the top bit set: others may sleep on it too.
    for (;;) {
        if (value == 0) {
            if (word.compare_exchange_strong(value, me | sleepers, std::memory_order_acquire))
                break;
            continue;
        }
        if (!(value & sleepers)) {
            if (!word.compare_exchange_strong(value, value | sleepers, std::memory_order_relaxed))
                continue;
            value |= sleepers;
        }
        host::futexWait(word, value, patience);
        const std::uint32_t now = word.load(std::memory_order_relaxed);
        if (now == value && host::startTime(static_cast<std::int32_t>(value & ~sleepers)) == 0) {
            if (word.compare_exchange_strong(value, me | sleepers, std::memory_order_acquire)) {
                takeOver();
                break;
            }
            continue;
        }
        value = now;
    }
    held = true;
}

// The dead owner may have stopped between a thread's state and the counts that follow from it.
void Lock::takeOver() {
    image.running = 0;
    image.waitingDrivers = 0;
    for (const ThreadRecord& thread : image.threads) {
        image.running += thread.state == ThreadState::running && !thread.driver;
        image.waitingDrivers += thread.state == ThreadState::waiting && thread.driver;
    }
}

void Lock::release() {
    held = false;
    if (word.exchange(0) & sleepers)
        host::futexWake(word);
    if (image.watched.load() && image.watched.exchange(0)) // after the change, as a watcher sets it before it looks
        host::futexWake(image.watched, INT_MAX);
}

} // namespace panel
