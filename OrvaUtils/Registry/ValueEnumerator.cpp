#include "OrvaUtils/Registry/ValueEnumerator.h"

namespace OrvaUtils::Registry {

namespace {

LONG valueName(HKEY key, DWORD index, LPWSTR name, DWORD* length) {
    return RegEnumValueW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
}

} // namespace

ValueEnumerator::ValueEnumerator(HKEY openKey) : NameEnumerator(openKey, valueName) {}

} // namespace OrvaUtils::Registry
