#include "OrvaUtils/Registry/KeyEnumerator.h"

namespace OrvaUtils::Registry {

namespace {

LONG keyName(HKEY key, DWORD index, LPWSTR name, DWORD* length) {
    return RegEnumKeyExW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
}

} // namespace

KeyEnumerator::KeyEnumerator(HKEY openKey) : NameEnumerator(openKey, keyName) {}

} // namespace OrvaUtils::Registry
