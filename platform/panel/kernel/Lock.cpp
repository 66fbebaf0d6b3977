#include "platform/panel/kernel/Lock.h"

#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Patience.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Wait.h"

#include <algorithm>
#include <climits>

namespace panel {

namespace {

constexpr std::uint32_t sleepers = 0x80000000;
constexpr std::uint32_t idBits = 22; // Linux ids are below 2^22
constexpr std::uint32_t idMask = (1U << idBits) - 1;
constexpr std::uint32_t startMask = 0x1FF; // all bits set: the start time is unknown
// Real ms between two checks whether the owner is alive. After a power cut it often is not: the first check comes soon.
constexpr std::uint32_t firstGlance = 1;
constexpr std::uint32_t lastGlance = 50;

std::int32_t threadOf(std::uint32_t owner) {
    return static_cast<std::int32_t>(owner & idMask);
}

// Returns whether the owner of the lock is dead, or its id belongs to another thread now.
bool isGone(std::uint32_t owner) {
    const std::uint64_t start = threadOf(owner) ? host::startTime(threadOf(owner)) : 0;
    const std::uint32_t noted = owner >> idBits & startMask;
    return start == 0 || (start != host::unknown && noted != startMask && noted != start % startMask);
}

} // namespace

bool Lock::endsWithPower = false;

std::uint32_t Lock::nameOf(std::int32_t threadId) {
    const std::uint64_t start = host::startTime(threadId);
    const auto noted = start == host::unknown ? startMask : static_cast<std::uint32_t>(start % startMask);
    return static_cast<std::uint32_t>(threadId) | noted << idBits;
}

void Lock::acquire() {
    const std::uint32_t limit = patience::limit.milliseconds;
    if (tryFor(limit ? limit : host::noLimit)) {
        // Since the call began the power may have gone: the process is about to be killed. Or the process may have
        // ended: its records are free, and may be in use again.
        if (!(endsWithPower && !image.on) && !(processEnded && !endsProcess))
            return;
        release();
        standStill();
    }
    const std::int32_t owner = threadOf(word.load(std::memory_order_relaxed));
    patience::limit.giveUp("process " + std::to_string(owner) + " holds the panel's kernel and " +
                           (host::isStopped(owner) ? "is stopped (kill -CONT " + std::to_string(owner) +
                                                         " lets it go on, panel off ends all programs)"
                                                   : "does not go on (panel off ends all programs)"));
}

bool Lock::tryFor(std::uint32_t milliseconds) {
    thread_local const std::uint32_t me = nameOf(host::threadId());
    std::uint32_t value = 0;
    if (word.compare_exchange_strong(value, me, std::memory_order_acquire))
        return held = true;
    // From here on the lock is taken with the top bit set, since other threads may sleep on the word, too.
    const std::int64_t begun = host::monotonicNanoseconds();
    for (std::uint32_t glance = firstGlance;;) {
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
        host::futexWait(word, value, glance);
        glance = std::min(2 * glance, lastGlance);
        const std::uint32_t now = word.load(std::memory_order_relaxed);
        if (now == value && isGone(value)) {
            if (word.compare_exchange_strong(value, me | sleepers, std::memory_order_acquire)) {
                scheduler::recover(image); // the dead owner may have left the counts wrong
                break;
            }
            continue;
        }
        if (milliseconds != host::noLimit &&
            host::monotonicNanoseconds() - begun > milliseconds * std::int64_t{1000000})
            return false;
        value = now;
    }
    return held = true;
}

void Lock::release() {
    if (!held)
        return;
    held = false;
    if (word.exchange(0) & sleepers)
        host::futexWake(word);
    // After the change: a watcher sets the word before it reads the tables.
    if (image.watched.load() && image.watched.exchange(0))
        host::futexWake(image.watched, INT_MAX);
}

} // namespace panel
