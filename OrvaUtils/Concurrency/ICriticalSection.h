#pragma once

namespace OrvaUtils::Concurrency {

// A critical section: it lets only one thread of the process run the guarded code at a time.
//
// It is recursive: the owning thread may enter again, and must leave as often as it entered. Both operations always
// succeed. ISystem::createCriticalSection creates a critical section.
class ICriticalSection {
public:
    // Waits without a limit until no other thread owns the critical section.
    virtual void enter() = 0;
    // Only the owning thread may call this. The platform does not check it.
    virtual void leave() = 0;
    // No thread may own the critical section or wait for it.
    virtual ~ICriticalSection() = default;
};

} // namespace OrvaUtils::Concurrency
