#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace OrvaUtils::Concurrency {

// A child process to be started. Deleting the object closes its handles; the child itself goes on.
class IProcess {
public:
    // Starts the child and returns its handle, which stays the object's own; null if it could not be started. A second
    // start forgets the first child's handles without closing them.
    virtual HANDLE start() = 0;
    // The handle of the started child, else null.
    virtual HANDLE getHandle() = 0;
    // STILL_ACTIVE while the child runs, then its exit code; 0 when there is no child.
    virtual std::uint32_t getExitCode() = 0;
    // One of the parameters that the object was created with; they are not passed to the child. False, and `value` as
    // it was, when there is none of that name. Throws std::bad_alloc when memory is short, and leaves `value` as it
    // was.
    virtual bool getParameter(const std::wstring& name, std::wstring& value) = 0;
    virtual ~IProcess() = default;
};

} // namespace OrvaUtils::Concurrency
