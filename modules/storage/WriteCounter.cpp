#include "modules/storage/WriteCounter.h"

#include <windows.h>

namespace {

constexpr wchar_t EMMC_DRIVER[] = L"SHC1:";
// The IOCTL of the driver: device type 7 (disk), function 3002, buffered, any access.
constexpr DWORD GET_COUNT = 0x72EE8;

} // namespace

std::uint32_t readWriteCounter() {
    const HANDLE driver = CreateFileW(EMMC_DRIVER, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (driver == INVALID_HANDLE_VALUE) {
        return 0;
    }
    std::uint32_t count = 0;
    DWORD returned = 0;
    const BOOL answered = DeviceIoControl(driver, GET_COUNT, nullptr, 0, &count, sizeof count, &returned, nullptr);
    CloseHandle(driver);
    return answered ? count : 0;
}
