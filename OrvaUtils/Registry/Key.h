#pragma once

#include <windows.h>

#include <string>

namespace OrvaUtils::Registry {

// An open registry key, which its destructor closes.
//
// The platform can delete neither an open key nor a key above it: keep the life of this object short. Only one thread
// at a time may use the object.
class Key {
public:
    // Opens the subkey with `openKey` and throws its RegistryException.
    Key(HKEY parent, const std::wstring& subkey);
    // Takes ownership of a key that is already open, such as the result of `createKey`.
    explicit Key(HKEY opened);
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key();

    // The handle is valid as long as this object lives.
    HKEY handle() const;

private:
    HKEY key;
};

} // namespace OrvaUtils::Registry
