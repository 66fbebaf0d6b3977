// Functions on registry keys: test, open, create, delete and flush.
//
// A path is relative to a predefined root key or to an open key, and its separator is the backslash. Failures throw
// RegistryException with the message given below. Any thread may call the functions; there is no lock. A change
// survives a power cut for certain only after a flush of the root key above it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace OrvaUtils::Registry {

// Returns true if a value exists. Does not throw: if the key cannot be opened or the value cannot be queried, the
// result is false. An empty path means the key `root` itself.
bool valueExists(HKEY root, const std::wstring& subkeyPath, const std::wstring& valueName);
// Returns true if a key can be opened. Does not throw.
bool keyExists(HKEY root, const std::wstring& path);

// Opens a key. The caller closes it, for example with Key. Throws "Cannot open subkey '<subkey>'".
HKEY openKey(HKEY root, const std::wstring& subkey);
// Opens a key, and creates it with all missing keys above it. `options` are the options of RegCreateKeyExW, normally 0.
// The caller closes the key. Throws "Cannot open subkey".
HKEY createKey(HKEY root, const std::wstring& subkey, DWORD options);
// Deletes a key and its subkeys with one RegDeleteKeyW. None of these keys may be open. Throws "Deleting non existing
// key" for any failure.
void deleteKey(HKEY root, const std::wstring& path);
// Deletes a key and its subkeys. First deletes subkeys one by one, then the key together with the subkeys that are
// left. Throws the exceptions of `openKey` and `deleteKey`; keys that were deleted before stay deleted.
void deleteKeyTree(HKEY root, const std::wstring& path);
// Deletes a value. Throws "Deleting non existing value" for any failure.
void deleteValue(HKEY key, const std::wstring& name);

// Calls RegFlushKey, which writes the changes of `key`'s whole root to flash memory. Ignores failures.
void flushKey(HKEY key);
// Flushes the four predefined roots. Returns the result of the last RegFlushKey.
LONG flushAll();

// Deletes the directory \RegPart\Windows, in which the platform keeps the registry. Files and directories in use are
// renamed with the prefix "_rm_".
void deleteRegistryStore();
// Deletes, in \RegPart, the leftovers that `deleteRegistryStore` has renamed.
void cleanupRegistryStore();

} // namespace OrvaUtils::Registry
