// Keys of the registry: whether they exist, opening, making, deleting, and making changes last.
//
// Paths are relative to a root or an open key, with backslashes. Failures are RegistryException. No locks: any thread
// may call. A change reaches the flash memory for certain only when its root is flushed.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace OrvaUtils::Registry {

// Never throw: what cannot be opened or queried does not exist. An empty path means the root itself.
bool valueExists(HKEY root, const std::wstring& subkeyPath, const std::wstring& valueName);
bool keyExists(HKEY root, const std::wstring& path);

// The caller closes it (Key does). Throws "Cannot open subkey '...'".
HKEY openKey(HKEY root, const std::wstring& subkey);
// Opens a key, and makes it, with all above it, if there is none. Throws "Cannot open subkey". The caller closes it.
HKEY createKey(HKEY root, const std::wstring& subkey, DWORD options);
// With all keys below it; no one may be open. Throws "Deleting non existing key", whatever the reason.
void deleteKey(HKEY root, const std::wstring& path);
// The same, key by key as far as it meets them.
void deleteKeyTree(HKEY root, const std::wstring& path);
// Throws "Deleting non existing value", whatever the reason.
void deleteValue(HKEY key, const std::wstring& name);

// A failure is ignored.
void flushKey(HKEY key);
// All four roots; the platform's answer for the last one.
LONG flushAll();

// The files in which the platform keeps the registry: deletes them, or renames them away while they are in use; and
// deletes what was renamed so.
void deleteRegistryStore();
void cleanupRegistryStore();

} // namespace OrvaUtils::Registry
