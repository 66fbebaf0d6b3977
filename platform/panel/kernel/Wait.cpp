#include "platform/panel/kernel/Wait.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Patience.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"

#include <algorithm>
#include <string>
#include <unistd.h>

namespace panel {

namespace {

constexpr std::uint32_t waitTimeout = 258;

// Returns the longest sleep in real ms. With `--patience` a command wakes up to check that stepped time moves.
std::uint32_t longestSleep(const Image& image, const ThreadRecord& thread) {
    const bool looks = thread.driver && image.clock.mode == ClockMode::stepped && patience::limit.milliseconds;
    return looks ? patience::limit.milliseconds : host::noLimit;
}

} // namespace

std::atomic<bool> processEnded{false};
thread_local bool endsProcess = false;
thread_local const PlatformCall* currentCall = nullptr;

std::string PlatformCall::text() const {
    return std::string(facts(function).name) + '[' + std::to_string(number) + "](" + arguments + ')';
}

void standStill() {
    for (;;)
        pause();
}

std::uint32_t block(Lock& lock, Image& image, Slot thread, std::uint64_t deadline) {
    ThreadRecord& record = scheduler::at(image, thread);
    record.deadline = deadline;
    record.waitOrder = ++image.waitOrder;
    record.waitingSince = clock::now(image);
    copyText(record.call, currentCall ? currentCall->text() : "");
    const std::uint32_t word = record.word.load(std::memory_order_relaxed);
    processes::letStartedRun(image, thread);
    scheduler::stopsRunning(image, thread);
    if (record.driver)
        processes::noticeDead(image); // before time moves: the end of a program may release threads now
    scheduler::step(image);
    const std::uint32_t longest = longestSleep(image, record);
    while (record.state == ThreadState::waiting || record.word.load(std::memory_order_acquire) == word) {
        const std::uint32_t real = std::min(clock::realUntil(image, deadline), longest);
        // Read before the lock is left: a wake-up in between changes the word, and the sleep returns at once.
        const std::uint32_t seen = record.word.load(std::memory_order_acquire);
        const std::uint64_t before = image.clock.now;
        const std::int64_t asleep = host::monotonicNanoseconds();
        lock.release();
        scheduler::deliverWakes(image);
        if (real > 0)
            host::futexWait(record.word, seen, real);
        if (processEnded)
            standStill();
        lock.acquire();
        if (longest != host::noLimit && image.clock.now == before && record.state == ThreadState::waiting &&
            host::monotonicNanoseconds() - asleep >= longest * std::int64_t{1000000}) {
            const std::string busy = patience::busyPrograms(image);
            lock.release();
            patience::limit.giveUp("panel time stands still: " + busy);
        }
        if (image.clock.mode == ClockMode::flowing)
            scheduler::releaseDue(image);
        scheduler::step(image);
    }
    return record.waitResult;
}

void sleepFor(Image& image, Slot thread, std::uint32_t milliseconds) {
    if (milliseconds == 0)
        return;
    Lock lock(image);
    scheduler::at(image, thread).waitKind = WaitKind::time;
    block(lock, image, thread, clock::deadline(image, milliseconds));
}

std::uint32_t waitForObjects(Lock& lock, Image& image, Slot thread, const Slot* waited, std::uint32_t count,
                             std::uint32_t milliseconds) {
    // The first signalled index wins, even if several objects are ready.
    for (std::uint32_t index = 0; index < count; ++index)
        if (scheduler::ready(image, waited[index], thread))
            return scheduler::take(image, waited[index], thread) + index;
    if (milliseconds == 0)
        return waitTimeout;
    ThreadRecord& record = scheduler::at(image, thread);
    record.waitKind = WaitKind::objects;
    record.waitCount = count;
    for (std::uint32_t index = 0; index < count; ++index) {
        record.waitObjects[index] = waited[index];
        objects::hold(image, waited[index]);
    }
    return block(lock, image, thread, clock::deadline(image, milliseconds));
}

} // namespace panel
