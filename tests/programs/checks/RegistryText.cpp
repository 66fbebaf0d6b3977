// Text in the registry: 16 bits a character, whatever the program's own characters are.
#include "tests/programs/checks/Check.h"

#include <windows.h>

#include <cstring>

void checks::registry() {
    static constexpr wchar_t written[] = L"a\U0001F600";
    static constexpr BYTE bytes[] = {0x61, 0x00, 0x3D, 0xD8, 0x00, 0xDE, 0x00, 0x00};
    static_assert(sizeof written == sizeof bytes);
    HKEY key = nullptr;
    DWORD disposition = 0;
    CHECK(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Checks\\\u20AC", 0, nullptr, 0, 0, nullptr, &key, &disposition) == 0);
    CHECK(disposition == REG_CREATED_NEW_KEY);
    CHECK(RegSetValueExW(key, L"Text\U0001F600", 0, REG_SZ, reinterpret_cast<const BYTE*>(written), sizeof written) ==
          0);
    CHECK(RegCloseKey(key) == 0);

    CHECK(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"checks\\\u20AC", 0, 0, &key) == 0);
    DWORD type = 0;
    DWORD size = 0;
    CHECK(RegQueryValueExW(key, L"Text\U0001F600", nullptr, &type, nullptr, &size) == 0);
    CHECK(type == REG_SZ && size == sizeof bytes);
    BYTE read[sizeof bytes + 2] = {};
    size = sizeof read;
    CHECK(RegQueryValueExW(key, L"Text\U0001F600", nullptr, &type, read, &size) == 0);
    CHECK(size == sizeof bytes && std::memcmp(read, bytes, sizeof bytes) == 0);
    CHECK(RegCloseKey(key) == 0);
}
