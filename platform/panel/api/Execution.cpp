// Processes, threads, modules, sleep and time.
#include "platform/panel/Gate.h"
#include "platform/panel/Program.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Wait.h"

#include <cstdio>
#include <ctime>
#include <memory>
#include <pthread.h>

using namespace panel;

namespace {

struct ThreadStart {
    LPTHREAD_START_ROUTINE entry;
    LPVOID parameter;
    Slot slot;
};

// noexcept, since the platform called the entry function: an exception that leaves it must end the process.
void* runThread(void* argument) noexcept {
    const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(argument));
    Runtime::instance().adoptThread(start->slot);
    start->entry(start->parameter);
    return nullptr;
}

// The host thread is detached: the panel's own thread object reports its end.
bool launchThread(ThreadStart* start) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread{};
    const bool started = pthread_create(&thread, &attributes, runThread, start) == 0;
    pthread_attr_destroy(&attributes);
    return started;
}

// Without a module the first word of the command line names the program.
void splitCommandLine(std::string& program, std::string& arguments) {
    const std::size_t start = std::min(arguments.find_first_not_of(' '), arguments.size());
    const bool quoted = start < arguments.size() && arguments[start] == '"';
    const std::size_t first = start + quoted;
    const std::size_t end = std::min(arguments.find(quoted ? '"' : ' ', first), arguments.size());
    program = arguments.substr(first, end - first);
    const std::size_t rest =
        std::min(arguments.find_first_not_of(' ', std::min(end + 1, arguments.size())), arguments.size());
    arguments.erase(0, rest);
}

// Searches a file name without a folder in the root and in \Windows. A name without an extension gets ".exe".
std::string searchProgram(const std::string& root, std::string name) {
    if (name.empty() || name.find('\\') != std::string::npos)
        return name;
    if (name.find('.') == std::string::npos)
        name += ".exe";
    const bool inWindows = !locate(root, '\\' + name).exists && locate(root, "\\Windows\\" + name).exists;
    return inWindows ? "\\Windows\\" + name : name;
}

} // namespace

BOOL CreateProcessW(LPCWSTR module, LPWSTR commandLine, SECURITY_ATTRIBUTES* processSecurity,
                    SECURITY_ATTRIBUTES* threadSecurity, BOOL inherit, DWORD, LPVOID environment, LPWSTR directory,
                    STARTUPINFOW*, PROCESS_INFORMATION* information) noexcept {
    Gate gate(Function::CreateProcessW, module, commandLine);
    if (gate.faulted())
        return gate.fault<BOOL>();
    if (processSecurity || threadSecurity || inherit || environment || directory)
        return gate.fails(FALSE, ERROR_INVALID_PARAMETER);
    std::string program = toUtf8(module);
    std::string arguments = toUtf8(commandLine ? commandLine : module);
    if (!module)
        splitCommandLine(program, arguments);
    Image& image = gate.image();
    const Lock lock(image);
    processes::noticeDead(image); // frees the slots of dead processes
    const Started started = startProgram(image, gate.runtime.directory(),
                                         searchProgram(gate.runtime.directory(), program), arguments, gate.slot());
    if (!started.process)
        return gate.fails(FALSE, started.error);
    const ProcessRecord& process = processes::at(image, started.process);
    const std::uint32_t processHandle = objects::openHandle(image, gate.process(), process.object);
    if (!processHandle) {
        processes::kill(image, started.process);
        return gate.fails(FALSE, ERROR_NOT_ENOUGH_MEMORY);
    }
    std::uint32_t threadHandle = 0;
    DWORD threadId = 0;
    if (const Slot object = process.mainThread ? objects::make(image, ObjectType::thread) : 0) {
        ThreadRecord& thread = scheduler::at(image, process.mainThread);
        thread.object = object;
        threadId = thread.id;
        objects::at(image, object).subject = process.mainThread;
        threadHandle = objects::openHandle(image, gate.process(), object);
    }
    if (information)
        *information = {handleOf(processHandle), handleOf(threadHandle), process.serial << 8 | started.process,
                        threadId};
    return gate.done(TRUE);
}

BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode) noexcept {
    Gate gate(Function::GetExitCodeProcess, process);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(process));
    if (!slot || objects::at(gate.image(), slot).type != ObjectType::process)
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    // A process may have died a moment ago, and no watcher has noticed it yet.
    processes::noticeDead(gate.image());
    const ObjectRecord& record = objects::at(gate.image(), slot);
    *exitCode = record.signalled ? record.exitCode : STILL_ACTIVE;
    gate.shows(*exitCode);
    return gate.done(TRUE);
}

HANDLE CreateThread(SECURITY_ATTRIBUTES*, DWORD, LPTHREAD_START_ROUTINE entry, LPVOID parameter, DWORD flags,
                    DWORD* threadId) noexcept {
    Gate gate(Function::CreateThread);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    if (!entry || flags)
        return gate.fails(HANDLE{}, ERROR_INVALID_PARAMETER);
    Image& image = gate.image();
    const Lock lock(image);
    const Slot slot = processes::makeThread(image, gate.process());
    const Slot object = slot ? objects::make(image, ObjectType::thread) : 0;
    const std::uint32_t handle = object ? objects::openHandle(image, gate.process(), object) : 0;
    auto start = std::make_unique<ThreadStart>(ThreadStart{entry, parameter, slot});
    if (!handle || !launchThread(start.get())) {
        if (handle)
            objects::closeHandle(image, gate.process(), handle);
        else if (object)
            objects::at(image, object).type = ObjectType::free;
        if (slot)
            processes::endThread(image, slot);
        return gate.fails(HANDLE{}, ERROR_NOT_ENOUGH_MEMORY);
    }
    static_cast<void>(start.release()); // the new thread owns it now
    ThreadRecord& thread = scheduler::at(image, slot);
    thread.object = object;
    objects::at(image, object).subject = slot;
    if (threadId)
        *threadId = thread.id;
    return gate.done(handleOf(handle));
}

DWORD GetCurrentThreadId() noexcept {
    Runtime& runtime = Runtime::instance();
    return scheduler::at(runtime.image(), runtime.thread().slot).id;
}

HMODULE GetModuleHandleW(LPCWSTR module) noexcept {
    Gate gate(Function::GetModuleHandleW, module);
    if (gate.faulted())
        return gate.fault<HMODULE>();
    if (module)
        return gate.fails(HMODULE{}, ERROR_MOD_NOT_FOUND);
    return gate.done(reinterpret_cast<HMODULE>(handleOf(moduleHandle)));
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD characters) noexcept {
    Gate gate(Function::GetModuleFileNameW, characters);
    if (gate.faulted())
        return gate.fault<DWORD>();
    if (module && numberOf(module) != moduleHandle)
        return gate.fails(DWORD{0}, ERROR_INVALID_HANDLE);
    const auto length = toWide(gate.runtime.processRecord().path, buffer, characters);
    if (length)
        gate.shows(static_cast<const wchar_t*>(buffer));
    return gate.done(static_cast<DWORD>(length));
}

void Sleep(DWORD milliseconds) noexcept {
    Gate gate(Function::Sleep, milliseconds);
    sleepFor(gate.image(), gate.slot(), milliseconds);
}

void OutputDebugStringW(LPCWSTR text) noexcept {
    Gate gate(Function::OutputDebugStringW, text);
    std::fputs(toUtf8(text).c_str(), stderr); // stderr of a program is its file in run/output
}

DWORD GetTickCount() noexcept {
    Gate gate(Function::GetTickCount);
    const Lock lock(gate.image());
    return gate.done(clock::ticks(gate.image()));
}

void GetSystemTime(SYSTEMTIME* time) noexcept {
    Gate gate(Function::GetSystemTime);
    std::int64_t date = 0;
    {
        const Lock lock(gate.image());
        date = clock::date(gate.image());
    }
    const auto seconds = static_cast<time_t>(date / 1000);
    tm parts{};
    gmtime_r(&seconds, &parts);
    *time = {static_cast<WORD>(parts.tm_year + 1900), static_cast<WORD>(parts.tm_mon + 1),
             static_cast<WORD>(parts.tm_wday),        static_cast<WORD>(parts.tm_mday),
             static_cast<WORD>(parts.tm_hour),        static_cast<WORD>(parts.tm_min),
             static_cast<WORD>(parts.tm_sec),         static_cast<WORD>(date % 1000)};
}
