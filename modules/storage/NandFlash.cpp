#include "modules/storage/NandFlash.h"

#include "OrvaUtils/Text.h"
#include "modules/storage/FlashNotWritableException.h"

#include <windows.h>

#include <iterator>

namespace {

constexpr wchar_t VOLUME[] = L"\\NANDFlash";
constexpr wchar_t FLASH_DRIVER[] = L"\\NANDFlash\\Vol:";
constexpr std::size_t VOLUME_LENGTH = std::size(VOLUME) - 1;
// The IOCTLs of the driver: device type 7 (disk), functions 140 and 139, buffered, any access.
constexpr DWORD MAKE_WRITABLE = 0x70230;
constexpr DWORD MAKE_READ_ONLY = 0x7022C;

void control(DWORD code) {
    const HANDLE driver =
        CreateFileW(FLASH_DRIVER, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    // Deliberate: a failed open returns -1 and not null. DeviceIoControl then fails, and the second test throws.
    if (driver == nullptr) {
        throw FlashNotWritableException();
    }
    const BOOL switched = DeviceIoControl(driver, code, nullptr, 0, nullptr, 0, nullptr, nullptr);
    CloseHandle(driver);
    if (!switched) {
        throw FlashNotWritableException();
    }
}

} // namespace

bool isOnNandFlash(const std::wstring& path) {
    return OrvaUtils::equalIgnoringCase(path.substr(0, VOLUME_LENGTH), VOLUME);
}

void makeFlashWritable() {
    control(MAKE_WRITABLE);
}

void makeFlashReadOnly() {
    control(MAKE_READ_ONLY);
}
