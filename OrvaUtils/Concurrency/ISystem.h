#pragma once

#include "OrvaUtils/Concurrency/ICriticalSection.h"
#include "OrvaUtils/Concurrency/IEvent.h"
#include "OrvaUtils/Concurrency/IProcess.h"
#include "OrvaUtils/Concurrency/IThread.h"

#include <cstdint>
#include <map>
#include <string>

namespace OrvaUtils::Concurrency {

// The platform's threads, events, critical sections, processes and time.
//
// The create operations return a new object, which the caller owns and deletes, or null if memory is short. Operations
// of these interfaces report failures by their return values and do not throw. Only
// IProcess::getParameter can throw.
class ISystem {
public:
    // Returns the milliseconds since the system started as a 64-bit number. The platform's counter has 32 bits and
    // wraps every 49.7 days; the result continues past a wrap only if the program calls this at least once between two
    // wraps. The first call in the process returns the platform's counter as it is. The function has no lock,
    // deliberately: only one thread at a time may call it.
    virtual std::uint64_t getTickCount64() = 0;
    // Blocks the calling thread for this time.
    virtual void sleep(unsigned milliseconds) = 0;
    // Creates a critical section that no thread owns.
    virtual ICriticalSection* createCriticalSection() = 0;
    // Creates an event that is not set.
    virtual IEvent* createEvent() = 0;
    // Creates a process object and starts nothing. If `path` is empty, the first word of `arguments` names the program.
    // If `arguments` is empty, CreateProcessW gets null as the command line; the platform then uses `path` instead.
    virtual IProcess* createProcess(const std::wstring& path, const std::wstring& arguments,
                                    const std::map<std::wstring, std::wstring>& parameters) = 0;
    // Creates a thread object and starts nothing.
    virtual IThread* createThread() = 0;
    virtual ~ISystem() = default;
};

// Returns the one system object of the process. The first call creates it; process exit deletes it. Throws
// std::bad_alloc if memory is short during the first call; the next call then tries again.
ISystem& getSystem();

} // namespace OrvaUtils::Concurrency
