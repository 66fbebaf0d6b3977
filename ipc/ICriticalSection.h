#pragma once

#include <memory>

namespace indev {

// Mutual exclusion. Recursive. A leave by a thread that does not hold it does nothing.
class ICriticalSection {
public:
    virtual void enter() = 0;
    virtual void leave() = 0;
    virtual ~ICriticalSection() = default;
};

// A new one of the platform's.
std::unique_ptr<ICriticalSection> createCriticalSection();

// Holds a critical section for its own lifetime.
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
