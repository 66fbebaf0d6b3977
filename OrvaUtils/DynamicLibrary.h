#pragma once

#include <windows.h>

#include <string>

namespace OrvaUtils {

// A library loaded by name, with its procedures looked up by name.
//
// Failures are LoadLibraryException: "Load <library> failed", "Get address of <procedure> failed". Any thread may call.
class DynamicLibrary {
public:
    enum class Lifetime {
        Process, // stays loaded until the process ends
        Object, // unloaded by the destructor; the procedures' addresses are void then
    };

    DynamicLibrary(std::wstring libraryName, Lifetime libraryLifetime);
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;
    ~DynamicLibrary();

    // Never null; to be cast to what the procedure is.
    void* getAddress(const std::wstring& procedure) const;

private:
    const std::wstring name;
    const Lifetime lifetime;
    const HMODULE library;
};

} // namespace OrvaUtils
