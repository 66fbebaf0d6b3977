#include "platform/panel/kernel/Scheduler.h"

#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Objects.h"

#include <algorithm>
#include <climits>

namespace panel::scheduler {

namespace {

constexpr std::uint32_t waitAbandoned = 0x80;
constexpr std::uint32_t waitTimeout = 258;

// The threads that this thread has released but not woken. The types are trivial: the destructors of other thread-local
// objects release threads, when a non-trivial object might already be destroyed.
thread_local Slot releasedHere[maxThreads];
thread_local std::uint32_t releasedCount;

// Returns whether a living driver waits. A killed driver must not let time run on.
bool aDriverWaits(Image& image) {
    if (image.waitingDrivers == 0)
        return false;
    for (const ThreadRecord& thread : usedThreads(image))
        if (thread.state == ThreadState::waiting && thread.driver &&
            host::exists(image.processes[thread.process - 1].hostPid))
            return true;
    return false;
}

// The exchange makes sure that a thread is woken once, even if `recover` runs in another process at the same time.
void wake(ThreadRecord& thread) {
    if (thread.wakeDue.exchange(0, std::memory_order_relaxed)) {
        thread.word.fetch_add(1, std::memory_order_release);
        host::futexWake(thread.word, INT_MAX); // a killed thread that had this record may not be quite dead
    }
}

} // namespace

ThreadRecord& at(Image& image, Slot thread) {
    return image.threads[thread - 1];
}

void startsRunning(Image& image, Slot thread) {
    ThreadRecord& record = at(image, thread);
    record.state = ThreadState::running;
    if (record.driver)
        --image.waitingDrivers;
    else
        ++image.running;
}

void stopsRunning(Image& image, Slot thread) {
    ThreadRecord& record = at(image, thread);
    record.state = ThreadState::waiting;
    if (record.driver)
        ++image.waitingDrivers;
    else
        --image.running;
}

void release(Image& image, Slot thread, std::uint32_t result) {
    ThreadRecord& record = at(image, thread);
    if (record.waitKind == WaitKind::objects)
        for (std::uint32_t index = 0; index < record.waitCount; ++index)
            objects::drop(image, record.waitObjects[index]);
    record.waitKind = WaitKind::none;
    record.waitResult = result;
    startsRunning(image, thread);
    record.wakeDue.store(1, std::memory_order_relaxed);
    releasedHere[releasedCount++] = thread;
}

void deliverWakes(Image& image) {
    for (std::uint32_t index = 0; index < releasedCount; ++index)
        wake(at(image, releasedHere[index]));
    releasedCount = 0;
}

void recover(Image& image) {
    image.running = 0;
    image.waitingDrivers = 0;
    for (ThreadRecord& thread : usedThreads(image)) {
        image.running += thread.state == ThreadState::running && !thread.driver;
        image.waitingDrivers += thread.state == ThreadState::waiting && thread.driver;
        wake(thread);
    }
}

bool ready(Image& image, Slot object, Slot thread) {
    const ObjectRecord& record = objects::at(image, object);
    if (record.type == ObjectType::mutex)
        return record.owner == 0 || record.owner == thread;
    return record.signalled;
}

std::uint32_t take(Image& image, Slot object, Slot thread) {
    ObjectRecord& record = objects::at(image, object);
    if (record.type == ObjectType::event && !record.manualReset)
        record.signalled = 0;
    if (record.type != ObjectType::mutex)
        return 0;
    record.owner = thread;
    ++record.recursion;
    const bool abandoned = record.signalled; // for a mutex this field means that its last owner ended
    record.signalled = 0;
    return abandoned ? waitAbandoned : 0;
}

void serve(Image& image, Slot object) {
    for (;;) {
        Slot first = 0;
        std::uint32_t position = 0;
        for (Slot thread = 1; thread <= image.threadsUsed; ++thread) {
            const ThreadRecord& record = at(image, thread);
            if (record.state != ThreadState::waiting || record.waitKind != WaitKind::objects ||
                (first && at(image, first).waitOrder < record.waitOrder))
                continue;
            const auto* end = record.waitObjects + record.waitCount;
            const auto* found = std::find(record.waitObjects, end, object);
            if (found != end) {
                first = thread;
                position = static_cast<std::uint32_t>(found - record.waitObjects);
            }
        }
        if (!first || !ready(image, object, first))
            return;
        release(image, first, take(image, object, first) + position);
    }
}

void releaseDue(Image& image) {
    const std::uint64_t now = clock::now(image);
    for (;;) {
        Slot first = 0;
        for (Slot thread = 1; thread <= image.threadsUsed; ++thread) {
            const ThreadRecord& record = at(image, thread);
            if (record.state == ThreadState::waiting && record.deadline <= now &&
                (!first || record.waitOrder < at(image, first).waitOrder))
                first = thread;
        }
        if (!first)
            return;
        release(image, first, waitTimeout);
    }
}

void step(Image& image) {
    // A panel that is off has no running programs. The count may be wrong then: the power cut may have killed programs
    // inside a call.
    const auto nobodyRuns = [&] { return image.running == 0 || !image.on; };
    while (image.clock.mode == ClockMode::stepped && nobodyRuns() && aDriverWaits(image)) {
        std::uint64_t nearest = never;
        for (const ThreadRecord& thread : usedThreads(image))
            if (thread.state == ThreadState::waiting)
                nearest = std::min(nearest, thread.deadline);
        if (nearest == never)
            return;
        image.clock.now = std::max(image.clock.now, nearest);
        releaseDue(image);
    }
}

void endThread(Image& image, Slot thread) {
    ThreadRecord& record = at(image, thread);
    if (record.state == ThreadState::waiting && record.waitKind == WaitKind::objects)
        for (std::uint32_t index = 0; index < record.waitCount; ++index)
            objects::drop(image, record.waitObjects[index]);
    if (record.state == ThreadState::running && !record.driver)
        --image.running;
    if (record.state == ThreadState::waiting && record.driver)
        --image.waitingDrivers;
    record.state = ThreadState::free;
    record.waitKind = WaitKind::none;
    for (Slot object = 1; object <= image.objectsUsed; ++object) {
        ObjectRecord& owned = objects::at(image, object);
        if (owned.type == ObjectType::mutex && owned.owner == thread) {
            owned.owner = 0;
            owned.recursion = 0;
            owned.signalled = 1;
            serve(image, object);
        }
    }
    if (const Slot object = record.object) {
        record.object = 0;
        objects::at(image, object).subject = 0;
        objects::at(image, object).signalled = 1;
        serve(image, object);
    }
}

} // namespace panel::scheduler
