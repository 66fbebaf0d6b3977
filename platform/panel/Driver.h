// What a test or the panel command does with a panel that is on: starts programs, lets time pass, asks for faults.
// Client.h has the messages to windows.
//
// The thread that makes the Driver is outside of the panel's time. In stepped mode panel time moves only while it waits
// in one of these functions, and only when all threads of the panel wait. One Driver a process at a time. All failures
// are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/Panel.h"

#include <functional>
#include <optional>

namespace panel {

struct ProcessHandle {
    std::string name; // "TarvexHelper.exe#2"
    std::uint32_t handle = 0;
    std::int32_t hostPid = 0;
    bool aware = false; // takes part in the panel's clock
};

struct CallStatus { // the platform call that a thread waits in: of nested ones the innermost
    std::uint32_t thread; // by order of creation
    std::uint64_t since; // panel ms
    std::string call; // as the trace shows it: "Sleep[1](1000)"
};

struct ProcessStatus {
    std::string name;
    std::string path;
    std::string commandLine;
    std::int32_t hostPid;
    bool driver;
    std::uint32_t threads;
    std::uint32_t waiting; // of these threads
    std::uint32_t handles; // to kernel objects, open
    std::vector<CallStatus> calls;
};

struct WindowStatus {
    std::string className;
    std::string process;
    bool visible;
};

struct EndedStatus {
    std::string name;
    std::uint32_t exitCode;
    std::uint64_t time; // panel ms
};

struct ScreenStatus {
    std::string cover; // class of the window that takes the whole screen; empty: none does
    std::string process; // its
    std::string background; // "black", "white", "none" or "other"
    std::int32_t cursorCount; // the cursor is shown while it is not below 0
};

struct SignalStatus { // a named event that was set since boot
    std::string event;
    std::uint32_t count;
};

struct PanelStatus {
    ClockMode mode;
    double factor;
    std::uint64_t time; // panel ms since boot
    std::uint32_t ticks;
    std::int64_t date; // ms since 1970 UTC
    bool tracing;
    std::vector<ProcessStatus> processes;
    std::vector<EndedStatus> ended; // the last ones, oldest first
    std::vector<WindowStatus> windows;
    std::optional<bool> userActive; // empty: there is no power manager
    bool flashWritable;
    std::vector<std::uint32_t> backLight; // what the driver holds
    ScreenStatus screen;
    std::string hook; // whose mouse hook is installed: "TarvexHelper.exe#1"; empty: there is none
    std::vector<SignalStatus> signals; // the first of them that were set
};

struct InitStart { // of a program that the registry lists under HKEY_LOCAL_MACHINE\init
    std::uint32_t number = 0; // of "LaunchNN", and the program's argument
    std::string path;
    ProcessHandle process; // without a name if it could not be started
    std::string failure; // why
};

struct Fault {
    std::string function;
    std::string program; // file name; empty: every program
    std::uint32_t start = 0; // which start of the program; 0: every
    std::uint32_t thread = 0; // by order of creation; 0: every
    std::uint32_t call = 1; // which call of the function in that thread
    bool ever = false; // and all after it
    FaultAction action = FaultAction::fail;
    std::uint32_t hits = 0; // how often it was applied
    std::optional<std::int64_t> answer = {}; // instead of what the list says that a failure answers
};

class Driver {
public:
    // What it starts, with all that this starts, ends with it, however it ends; or stays.
    enum class Programs { end, stay };
    static constexpr const char* command = "\\Windows\\panel.exe";
    explicit Driver(const Panel& panel, const std::string& countsAs = command, Programs programs = Programs::end);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    ProcessHandle start(const std::string& path, const std::string& commandLine = {});
    // What a panel does once it has booted: starts the programs of the "init" list in the order of their numbers. A
    // name without a folder lies in \Windows. "DependNN" is not looked at: every program counts as started at once.
    std::vector<InitStart> startInit();
    // At most so many ms of panel time; empty: it still runs.
    std::optional<std::uint32_t> waitForExit(const ProcessHandle& process, std::uint32_t limit);
    std::optional<std::uint32_t> exitCode(const ProcessHandle& process);

    void advance(std::uint64_t milliseconds);
    // Until all threads of the panel wait; time does not move. Flowing time: returns at once.
    void settle();
    // True once the condition holds, looked at whenever all threads of the panel wait; false after so much panel time.
    bool waitUntil(const std::function<bool()>& condition, std::uint64_t limit);

    // Ends a process as a crash would ("TarvexHelper.exe#2"); false if there is none.
    bool kill(const std::string& process);

    bool isOn(); // false once this very panel was switched off, also when it has been booted again since
    PanelStatus status();
    void setTicks(std::uint32_t ticks); // what the tick count is now
    void setTracing(bool on); // keeps what the trace holds

    void addFault(const Fault& fault);
    std::vector<Fault> faults();
    void clearFaults();

    // Until the host's processes of programs that have ended are gone: their last words stand in run/output then.
    void waitForLingering();

private:
    Panel panel;
};

} // namespace panel
