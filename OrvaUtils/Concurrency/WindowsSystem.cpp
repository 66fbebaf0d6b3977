#include "OrvaUtils/Concurrency/ISystem.h"

#include <windows.h>

#include <memory>
#include <new>

namespace OrvaUtils::Concurrency {

namespace {

// These variables are deliberately neither locked nor atomic: the callers ensure that one thread calls at a time.
bool tickCountInitialised = false;
DWORD lastTickCount = 0;
std::uint32_t tickCountWraps = 0;

class WindowsCriticalSection : public ICriticalSection {
public:
    WindowsCriticalSection() {
        InitializeCriticalSection(&section);
    }
    WindowsCriticalSection(const WindowsCriticalSection&) = delete;
    WindowsCriticalSection& operator=(const WindowsCriticalSection&) = delete;

    void enter() override {
        EnterCriticalSection(&section);
    }

    void leave() override {
        LeaveCriticalSection(&section);
    }

    ~WindowsCriticalSection() override {
        DeleteCriticalSection(&section);
    }

private:
    CRITICAL_SECTION section;
};

class WindowsEvent : public IEvent {
public:
    // The result is not checked here. Operations on a null handle fail and report it.
    WindowsEvent() : handle(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    WindowsEvent(const WindowsEvent&) = delete;
    WindowsEvent& operator=(const WindowsEvent&) = delete;

    DWORD wait(unsigned timeoutMilliseconds) override {
        return WaitForSingleObject(handle, timeoutMilliseconds);
    }

    DWORD wait() override {
        return WaitForSingleObject(handle, INFINITE);
    }

    bool set() override {
        return EventModify(handle, EVENT_SET) != FALSE;
    }

    bool reset() override {
        return EventModify(handle, EVENT_RESET) != FALSE;
    }

    ~WindowsEvent() override {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }

private:
    HANDLE handle;
};

class WindowsProcess : public IProcess {
public:
    WindowsProcess(const std::wstring& programPath, const std::wstring& programArguments,
                   const std::map<std::wstring, std::wstring>& programParameters)
        : path(programPath), arguments(programArguments), parameters(programParameters) {}
    WindowsProcess(const WindowsProcess&) = delete;
    WindowsProcess& operator=(const WindowsProcess&) = delete;

    HANDLE start() override {
        // The handles of an earlier child are lost here, as the interface documents.
        process = nullptr;
        thread = nullptr;
        // CreateProcessW may write into the command line, so it gets a copy.
        std::unique_ptr<wchar_t[]> commandLine;
        if (!arguments.empty()) {
            commandLine.reset(new (std::nothrow) wchar_t[arguments.size() + 1]());
            if (commandLine == nullptr) {
                return nullptr;
            }
            arguments.copy(commandLine.get(), arguments.size());
        }
        STARTUPINFOW startupInfo{};
        startupInfo.cb = sizeof startupInfo;
        PROCESS_INFORMATION processInformation{};
        if (CreateProcessW(path.empty() ? nullptr : path.c_str(), commandLine.get(), nullptr, nullptr, FALSE, 0,
                           nullptr, nullptr, &startupInfo, &processInformation)) {
            process = processInformation.hProcess;
            thread = processInformation.hThread;
        }
        return process;
    }

    HANDLE getHandle() override {
        return process;
    }

    std::uint32_t getExitCode() override {
        DWORD exitCode = 0;
        if (process != nullptr) {
            GetExitCodeProcess(process, &exitCode);
        }
        return exitCode;
    }

    bool getParameter(const std::wstring& name, std::wstring& value) override {
        const auto found = parameters.find(name);
        if (found == parameters.end()) {
            return false;
        }
        value = found->second;
        return true;
    }

    ~WindowsProcess() override {
        if (process != nullptr) {
            CloseHandle(process);
        }
        if (thread != nullptr) {
            CloseHandle(thread);
        }
    }

private:
    std::wstring path;
    std::wstring arguments;
    std::map<std::wstring, std::wstring> parameters;
    HANDLE process = nullptr;
    HANDLE thread = nullptr;
};

// The thread's entry. IRunnable::run must not throw: nothing here catches an exception.
DWORD WINAPI runRunnable(LPVOID argument) {
    static_cast<IRunnable*>(argument)->run();
    return 0;
}

class WindowsThread : public IThread {
public:
    WindowsThread() = default;
    WindowsThread(const WindowsThread&) = delete;
    WindowsThread& operator=(const WindowsThread&) = delete;

    HANDLE start(IRunnable* runnableToStart) override {
        runnable = runnableToStart;
        // A zero stack size means the default size; the thread runs at once.
        handle = CreateThread(nullptr, 0, runRunnable, runnable, 0, &threadId);
        return handle;
    }

    DWORD stop() override {
        runnable->stop();
        return WaitForSingleObject(handle, INFINITE);
    }

    ~WindowsThread() override {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }

private:
    HANDLE handle = nullptr;
    DWORD threadId = 0;
    IRunnable* runnable = nullptr;
};

class WindowsSystem : public ISystem {
public:
    std::uint64_t getTickCount64() override {
        if (!tickCountInitialised) {
            tickCountInitialised = true;
            // The first call has no earlier value to compare with.
            lastTickCount = GetTickCount();
        }
        const DWORD now = GetTickCount();
        // The 32-bit counter of the platform has wrapped since the last call.
        if (lastTickCount > now) {
            ++tickCountWraps;
        }
        lastTickCount = now;
        return static_cast<std::uint64_t>(tickCountWraps) << 32 | now;
    }

    void sleep(unsigned milliseconds) override {
        Sleep(milliseconds);
    }

    ICriticalSection* createCriticalSection() override {
        return new (std::nothrow) WindowsCriticalSection;
    }

    IEvent* createEvent() override {
        return new (std::nothrow) WindowsEvent;
    }

    IProcess* createProcess(const std::wstring& path, const std::wstring& arguments,
                            const std::map<std::wstring, std::wstring>& parameters) override {
        // The strings and the map are copied, and the copies may fail. The interface promises null instead of an
        // exception.
        try {
            return new WindowsProcess(path, arguments, parameters);
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }

    IThread* createThread() override {
        return new (std::nothrow) WindowsThread;
    }
};

} // namespace

ISystem& getSystem() {
    // The destructor of this object runs at process exit.
    static const std::unique_ptr<ISystem> system(new WindowsSystem);
    return *system;
}

} // namespace OrvaUtils::Concurrency
