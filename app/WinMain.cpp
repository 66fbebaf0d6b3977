#include "app/ExitCode.h"
#include "app/InitializeHelper.h"
#include "app/RunModuleManager.h"
#include "app/log/Logger.h"

#include <windows.h>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    exitCode = 0;
    HANDLE mutex = CreateMutexW(nullptr, FALSE, L"OrvaTarvexHelper.0");
    const bool firstInstance = mutex != nullptr && GetLastError() != ERROR_ALREADY_EXISTS;
    if (firstInstance && InitializeHelper(mutex)) {
        RunModuleManager();
        Logger::instance().writeParts(LogLevel::Info, {L"Helper terminated"});
    }
    // Deliberate: released, which the platform refuses to who does not own it, and never closed.
    if (mutex != nullptr) {
        ReleaseMutex(mutex);
    }
    return exitCode;
}
