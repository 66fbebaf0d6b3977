#pragma once

#include <windows.h>

#include <string>

namespace OrvaUtils::Registry {

// An open key, closed at the end of its life. While it is open it cannot be deleted, nor a key above it.
class Key {
public:
    // Opens a key below another one, as openKey does.
    Key(HKEY parent, const std::wstring& subkey);
    // Takes over a key that is open, as createKey leaves it.
    explicit Key(HKEY opened);
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key();

    HKEY handle() const;

private:
    HKEY key;
};

} // namespace OrvaUtils::Registry
