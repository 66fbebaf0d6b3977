#include "app/ExitCode.h"
#include "app/FailureReport.h"
#include "app/InitializeHelper.h"
#include "app/LogSetup.h"
#include "app/RunModuleManager.h"
#include "app/log/Logger.h"
#include "modules/buzzer/MouseHook.h"

#include <windows.h>

namespace {

// Deliberate: the events of the touch hook come before everything else, also before the instance lock.
bool makeMouseHook() {
    try {
        MouseHook::instance();
        return true;
    } catch (...) {
        try {
            configureLog(); // or nobody would know why there is no helper
        } catch (...) { // then nobody does
        }
        reportFailure();
        return false;
    }
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    if (!makeMouseHook()) {
        return exitCode;
    }
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
