#include "app/ExitCode.h"
#include "app/InitializeHelper.h"
#include "app/RunModuleManager.h"
#include "app/log/Logger.h"
#include "modules/buzzer/MouseHook.h"

#include <windows.h>

namespace {

// Creates the mouse hook object. Returns null if that succeeds, otherwise the exception.
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
    // Deliberate: the events of the mouse hook are created before everything else, even before the instance mutex.
    const std::exception_ptr hookFailure = failureOfMouseHook();
    exitCode = 0;
    // The mutex is not owned. Only the existence of its name keeps a second instance away.
    HANDLE mutex = CreateMutexW(nullptr, FALSE, L"OrvaTarvexHelper.0");
    const bool firstInstance = mutex != nullptr && GetLastError() != ERROR_ALREADY_EXISTS;
    // A second instance logs nothing and ends with exit code 0.
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
