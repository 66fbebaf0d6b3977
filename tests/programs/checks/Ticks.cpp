// 32-bit ticks and waits. The panel's tick count at boot is half a second before its wrap.
#include "OrvaUtils/Concurrency/ISystem.h"
#include "tests/programs/checks/Check.h"

#include <windows.h>

void checks::ticks() {
    OrvaUtils::Concurrency::ISystem& system = OrvaUtils::Concurrency::getSystem();
    const DWORD first = GetTickCount();
    const std::uint64_t start = system.getTickCount64();
    CHECK(first == 0xFFFFFFFF - 499);
    CHECK(start == first);
    Sleep(499);
    CHECK(GetTickCount() == 0xFFFFFFFF);
    CHECK(system.getTickCount64() - start == 499);
    const HANDLE never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CHECK(WaitForSingleObject(never, 2) == WAIT_TIMEOUT); // over the wrap
    CHECK(GetTickCount() == 1);
    CHECK(GetTickCount() - first == 501);
    CHECK(system.getTickCount64() == 0x100000001);
    Sleep(0x80000000); // more than a signed number holds
    CHECK(GetTickCount() == 0x80000001);
    CHECK(system.getTickCount64() == 0x180000001);
    Sleep(0x7FFFFFFF);
    CHECK(system.getTickCount64() == 0x200000000);
    CloseHandle(never);
}
