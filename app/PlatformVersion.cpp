#include "app/PlatformVersion.h"

#include "OrvaUtils/Registry/Reading.h"

#include <crt.h>

std::int32_t platformMinorVersion() {
    const std::wstring version = OrvaUtils::Registry::readString(HKEY_LOCAL_MACHINE, L"ORVA", L"Version");
    // Without a dot, `find` returns npos, and npos + 1 is 0.
    const std::size_t minor = version.find(L'.') + 1;
    // _wtol would also accept a blank or a sign. Only a digit begins a number here.
    const bool isNumber = minor != 0 && version[minor] >= L'0' && version[minor] <= L'9';
    return isNumber ? static_cast<std::int32_t>(_wtol(version.c_str() + minor)) : 0;
}
