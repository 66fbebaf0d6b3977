#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace OrvaUtils::Registry {

// Enumerates names in an open key by their index, from 0 on: the common part of KeyEnumerator and ValueEnumerator.
//
//     while (names.isValid()) {
//         use(*names);
//     }
//
// The enumerator does not own the key. It does not notice changes: after a deletion the later names move to lower
// indexes, and the enumeration skips a name. A platform failure ends the enumeration without a report, and so does a
// name of 260 characters or more. Only one thread may use the object.
class NameEnumerator {
public:
    NameEnumerator(const NameEnumerator&) = delete;
    NameEnumerator& operator=(const NameEnumerator&) = delete;

    // Tells whether there is a current name.
    bool isValid() const;
    // Returns the current name and moves on to the next name. Call it only while `isValid`.
    std::wstring operator*();

protected:
    // The platform function that reads the name at an index. `length` holds the room in characters before the call, and
    // the length of the name after it.
    using Function = LONG (*)(HKEY key, DWORD index, LPWSTR name, DWORD* length);

    NameEnumerator(HKEY openKey, Function platformFunction);
    ~NameEnumerator() = default;

private:
    void enumerate();

    HKEY key;
    Function function;
    std::uint32_t index = 0;
    bool valid = false;
    wchar_t buffer[MAX_PATH] = {};
    std::wstring name;
};

} // namespace OrvaUtils::Registry
