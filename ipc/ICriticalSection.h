#pragma once

#include <memory>

namespace indev {

// A critical section that tolerates a leave by a thread that does not own it.
//
// It lets only one thread of the process run the guarded code at a time. It is recursive: the owning thread may enter
// again, and must leave as often as it entered. Any thread may call both operations.
class ICriticalSection {
public:
    // Waits without a limit until no other thread owns the critical section.
    virtual void enter() = 0;
    // Ends one `enter` of the calling thread. Does nothing if the calling thread is not the owner.
    virtual void leave() = 0;
    // No thread may own the critical section or wait for it.
    virtual ~ICriticalSection() = default;
};

// Creates a critical section that no thread owns. Throws std::bad_alloc if memory is short.
std::unique_ptr<ICriticalSection> createCriticalSection();

// Enters a critical section in the constructor and leaves it in the destructor, even when an exception passes. The
// critical section is not owned and must live longer.
class CriticalSectionGuard {
public:
    explicit CriticalSectionGuard(ICriticalSection& criticalSection) : section(criticalSection) {
        section.enter();
    }
    CriticalSectionGuard(const CriticalSectionGuard&) = delete;
    CriticalSectionGuard& operator=(const CriticalSectionGuard&) = delete;
    ~CriticalSectionGuard() {
        section.leave();
    }

private:
    ICriticalSection& section;
};

} // namespace indev
