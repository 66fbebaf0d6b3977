#pragma once

#include "OrvaUtils/Concurrency/ICriticalSection.h"
#include "OrvaUtils/Concurrency/IEvent.h"
#include "OrvaUtils/Concurrency/IProcess.h"
#include "OrvaUtils/Concurrency/IThread.h"

#include <cstdint>
#include <map>
#include <string>

namespace OrvaUtils::Concurrency {

// Threads, events, processes and time of the platform.
//
// What the create operations return belongs to the caller, who deletes it; they answer null when memory is short. No
// operation of these interfaces throws, but for IProcess::getParameter: failures show in results.
class ISystem {
public:
    // Milliseconds since the system started, past the 32-bit wrap of the platform's counter (49.7 days) as long as it
    // is called at least once between two wraps. For one thread at a time: its state is not guarded.
    virtual std::uint64_t getTickCount64() = 0;
    virtual void sleep(unsigned milliseconds) = 0;
    virtual ICriticalSection* createCriticalSection() = 0;
    // Not set.
    virtual IEvent* createEvent() = 0;
    // Nothing is started yet. An empty path: the program is the first word of the arguments.
    virtual IProcess* createProcess(const std::wstring& path, const std::wstring& arguments,
                                    const std::map<std::wstring, std::wstring>& parameters) = 0;
    // Nothing is started yet.
    virtual IThread* createThread() = 0;
    virtual ~ISystem() = default;
};

// The one system of the process, made at the first call and deleted at the process's exit. Throws std::bad_alloc when
// memory is short at that call; the next one then tries again.
ISystem& getSystem();

} // namespace OrvaUtils::Concurrency
