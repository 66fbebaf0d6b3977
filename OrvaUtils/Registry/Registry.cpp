#include "OrvaUtils/Registry/Registry.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "OrvaUtils/Registry/Key.h"
#include "OrvaUtils/Registry/KeyEnumerator.h"
#include "OrvaUtils/Registry/RegistryException.h"

namespace OrvaUtils::Registry {

namespace {

// The platform keeps the registry in these directories of the flash file system.
constexpr wchar_t STORE[] = L"\\RegPart";
constexpr wchar_t PLATFORM_STORE[] = L"\\RegPart\\Windows";

bool tryOpen(HKEY root, const std::wstring& path, HKEY& key) {
    return RegOpenKeyExW(root, path.c_str(), 0, 0, &key) == ERROR_SUCCESS;
}

// A query without buffers only tells whether the value exists.
bool hasValue(HKEY key, const std::wstring& name) {
    return RegQueryValueExW(key, name.c_str(), nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

} // namespace

bool valueExists(HKEY root, const std::wstring& subkeyPath, const std::wstring& valueName) {
    if (subkeyPath.empty()) {
        return hasValue(root, valueName);
    }
    HKEY opened = nullptr;
    if (!tryOpen(root, subkeyPath, opened)) {
        return false;
    }
    // The destructor closes the key on every way out.
    const Key key(opened);
    return hasValue(opened, valueName);
}

bool keyExists(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    const bool exists = tryOpen(root, path, key);
    if (exists) {
        RegCloseKey(key);
    }
    return exists;
}

HKEY openKey(HKEY root, const std::wstring& subkey) {
    HKEY key = nullptr;
    if (!tryOpen(root, subkey, key)) {
        throw RegistryException(L"Cannot open subkey '" + subkey + L"'");
    }
    return key;
}

HKEY createKey(HKEY root, const std::wstring& subkey, DWORD options) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    if (RegCreateKeyExW(root, subkey.c_str(), 0, nullptr, options, 0, nullptr, &key, &disposition) != ERROR_SUCCESS) {
        throw RegistryException(L"Cannot open subkey");
    }
    return key;
}

void deleteKey(HKEY root, const std::wstring& path) {
    if (RegDeleteKeyW(root, path.c_str()) != ERROR_SUCCESS) {
        throw RegistryException(L"Deleting non existing key");
    }
}

void deleteKeyTree(HKEY root, const std::wstring& path) {
    {
        // The key must be closed before it is deleted: the platform does not delete an open key.
        const Key key(root, path);
        KeyEnumerator names(key.handle());
        while (names.isValid()) {
            // Deliberate: the index grows while keys are deleted, so the loop skips keys. The last call deletes the
            // skipped keys.
            deleteKeyTree(key.handle(), *names);
        }
    }
    deleteKey(root, path);
}

void deleteValue(HKEY key, const std::wstring& name) {
    if (RegDeleteValueW(key, name.c_str()) != ERROR_SUCCESS) {
        throw RegistryException(L"Deleting non existing value");
    }
}

void flushKey(HKEY key) {
    RegFlushKey(key);
}

LONG flushAll() {
    LONG result = ERROR_SUCCESS;
    for (HKEY root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS}) {
        result = RegFlushKey(root);
    }
    return result;
}

void deleteRegistryStore() {
    IO::getFileSystem().deleteDirectoryOrRename(PLATFORM_STORE);
}

void cleanupRegistryStore() {
    IO::getFileSystem().cleanupDirectory(STORE);
}

} // namespace OrvaUtils::Registry
