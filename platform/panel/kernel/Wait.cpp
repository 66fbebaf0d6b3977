#include "platform/panel/kernel/Wait.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"

#include <unistd.h>

namespace panel {

namespace {

constexpr std::uint32_t waitTimeout = 258;
// Real ms after which a sleeper looks for processes that were killed: the one who lets time pass looks more often.
constexpr std::uint32_t driverPatience = 50;
constexpr std::uint32_t patience = 500;

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
    bool overdue = false; // released, but whoever released it has not come to wake it: perhaps it was killed
    processes::letStartedRun(image, thread);
    scheduler::stopsRunning(image, thread);
    if (record.driver)
        processes::noticeDead(image); // or time would pass by what a program's death sets off
    scheduler::step(image);
    while (record.state == ThreadState::waiting || (record.word.load(std::memory_order_acquire) == word && !overdue)) {
        const std::uint32_t real = clock::realUntil(image, deadline, record.driver ? driverPatience : patience);
        const std::uint32_t seen = record.word.load(std::memory_order_acquire);
        lock.release();
        scheduler::deliverWakes(image);
        if (real > 0)
            host::futexWait(record.word, seen, real);
        if (processEnded)
            standStill();
        lock.acquire();
        const bool slept = real == driverPatience || real == patience;
        if (slept && record.word.load(std::memory_order_acquire) == seen) {
            overdue = record.state != ThreadState::waiting;
            processes::noticeDead(image);
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
