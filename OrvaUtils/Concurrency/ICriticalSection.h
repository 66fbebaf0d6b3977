#pragma once

namespace OrvaUtils::Concurrency {

// Mutual exclusion between the threads of the process. Recursive: the thread that holds it may enter again and leaves
// as often as it entered.
class ICriticalSection {
public:
    virtual void enter() = 0;
    virtual void leave() = 0;
    virtual ~ICriticalSection() = default;
};

} // namespace OrvaUtils::Concurrency
