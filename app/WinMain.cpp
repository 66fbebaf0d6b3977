#include "app/ExitCode.h"
#include "app/InitializeHelper.h"
#include "app/RunModuleManager.h"
#include "app/log/Logger.h"
#include "modules/buzzer/MouseHook.h"

#include <windows.h>

namespace {

// Null: it was made.
std::exception_ptr failureOfMouseHook() {
    try {
        MouseHook::instance();
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    // Deliberate: the events of the touch hook come before everything else, also before the instance lock.
    const std::exception_ptr hookFailure = failureOfMouseHook();
    exitCode = 0;
    HANDLE mutex = CreateMutexW(nullptr, FALSE, L"OrvaTarvexHelper.0");
    const bool firstInstance = mutex != nullptr && GetLastError() != ERROR_ALREADY_EXISTS;
    if (firstInstance && InitializeHelper(mutex, hookFailure)) {
        RunModuleManager();
        Logger::instance().writeParts(LogLevel::Info, {L"Helper terminated"});
    }
    // Deliberate: `ReleaseMutex` fails because no thread owns the mutex. The handle stays open until the process ends.
    if (mutex != nullptr) {
        ReleaseMutex(mutex);
    }
    return exitCode;
}
