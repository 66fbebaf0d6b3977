#pragma once

#include <windows.h>

#include <string>

namespace OrvaUtils {

// A library that is loaded at run time by its name, with a look-up of its procedures by name.
//
// Failures throw LoadLibraryException. Any thread may call.
class DynamicLibrary {
public:
    // Decides what the destructor does with the library.
    enum class Lifetime {
        Process, // the library stays loaded until the process ends
        Object, // the destructor unloads the library; the addresses of its procedures become invalid
    };

    // Loads the library. Throws "Load <library> failed".
    DynamicLibrary(std::wstring libraryName, Lifetime libraryLifetime);
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;
    ~DynamicLibrary();

    // Returns the address of a procedure, never null. The caller casts the address to the type of the procedure. Throws
    // "Get address of <procedure> failed".
    void* getAddress(const std::wstring& procedure) const;

private:
    const std::wstring name;
    const Lifetime lifetime;
    const HMODULE library;
};

} // namespace OrvaUtils
