// The helper's eMMC statistics alone, without the threads of its modules: with those at work on the same heap at the
// same time, an update would not execute the same instructions each time (bench/costs.py).
#include "modules/storage/EMMCMonitor.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    EMMCMonitor monitor;
    monitor.start();
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
