#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace OrvaUtils::Concurrency {

// A child process: its program, its arguments and, after `start`, its handles.
//
// The child does not inherit handles, environment or current directory. The destructor closes the two handles; it
// neither ends the child nor waits for it. Only one thread at a time may use an object.
class IProcess {
public:
    // Starts the child. Returns the process handle, which the object still owns, or null if the platform cannot start
    // the program or memory is short. A second start overwrites the handles of the first child without closing them.
    virtual HANDLE start() = 0;
    // Returns the handle of the last child, or null if no start has succeeded. The object owns the handle.
    virtual HANDLE getHandle() = 0;
    // Returns the exit code of the child, STILL_ACTIVE (259) while the child runs, and 0 without a child.
    virtual std::uint32_t getExitCode() = 0;
    // Looks up a parameter that the object was created with. Parameters stay in this process: the child does not get
    // them. Returns false, and leaves `value` unchanged, if no parameter has this name. Throws std::bad_alloc, and
    // leaves `value` unchanged, if memory is short.
    virtual bool getParameter(const std::wstring& name, std::wstring& value) = 0;
    virtual ~IProcess() = default;
};

} // namespace OrvaUtils::Concurrency
