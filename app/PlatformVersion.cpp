#include "app/PlatformVersion.h"

#include "OrvaUtils/Registry/Reading.h"

#include <crt.h>

std::int32_t platformMinorVersion() {
    const std::wstring version = OrvaUtils::Registry::readString(HKEY_LOCAL_MACHINE, L"ORVA", L"Version");
    const std::size_t minor = version.find(L'.') + 1;
    // Only digits count: a blank or a sign, which _wtol would take, is no number here.
    const bool isNumber = minor != 0 && version[minor] >= L'0' && version[minor] <= L'9';
    return isNumber ? static_cast<std::int32_t>(_wtol(version.c_str() + minor)) : 0;
}
