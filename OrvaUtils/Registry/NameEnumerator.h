#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace OrvaUtils::Registry {

// Walks the names in an open key, which it does not own, by their numbers from 0 on:
// `while (names.isValid()) use(*names);`. It does not notice changes: what is deleted moves the names behind it up by
// one, and the walk then skips one. A failure ends the walk, and so does a name of 260 characters or more.
class NameEnumerator {
public:
    NameEnumerator(const NameEnumerator&) = delete;
    NameEnumerator& operator=(const NameEnumerator&) = delete;

    // Whether a name is current.
    bool isValid() const;
    // The current name; the next one becomes current.
    std::wstring operator*();

protected:
    // The platform's function: the name with this number, and how many characters there is room for.
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
