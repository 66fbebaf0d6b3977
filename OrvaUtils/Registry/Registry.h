// Functions on registry keys: test, open, create, delete and flush.
//
// A path is relative to a predefined root or to an open key and uses backslashes. Failures throw RegistryException with
// the message given below. Any thread may call; there is no lock. A change survives a power cut for certain only after
// its root key was flushed.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace OrvaUtils::Registry {

// Tells whether a value can be queried. Does not throw: if the key cannot be opened or the value cannot be queried, the
// result is false. An empty path means the root itself.
bool valueExists(HKEY root, const std::wstring& subkeyPath, const std::wstring& valueName);
// Tells whether a key can be opened. Does not throw.
bool keyExists(HKEY root, const std::wstring& path);

// Opens a key. The caller closes it, for example with Key. Throws "Cannot open subkey '<subkey>'".
HKEY openKey(HKEY root, const std::wstring& subkey);
// Opens a key, and creates it with all missing keys above it. `options` are the options of RegCreateKeyExW, normally 0.
// The caller closes the key. Throws "Cannot open subkey".
HKEY createKey(HKEY root, const std::wstring& subkey, DWORD options);
// Deletes a key and its subkeys. None of them may be open. Throws "Deleting non existing key" for any failure.
void deleteKey(HKEY root, const std::wstring& path);
// Deletes a key and its subkeys, at first key by key. Throws the exceptions of `openKey` and `deleteKey`.
void deleteKeyTree(HKEY root, const std::wstring& path);
// Deletes a value. Throws "Deleting non existing value" for any failure.
void deleteValue(HKEY key, const std::wstring& name);

// Writes the changes below a root key to flash memory. Ignores failures.
void flushKey(HKEY key);
// Flushes the four predefined roots. Returns the result of the last RegFlushKey.
LONG flushAll();

// Deletes the files in which the platform keeps the registry (\RegPart\Windows). Files in use get the prefix "_rm_".
void deleteRegistryStore();
// Deletes the files that `deleteRegistryStore` renamed (in \RegPart).
void cleanupRegistryStore();

} // namespace OrvaUtils::Registry
