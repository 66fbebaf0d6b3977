// The state of a panel that is on, for people and tests: processes, windows, screen, clock.
#pragma once

#include "platform/panel/kernel/Records.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace panel {

struct Image;

// The platform call in which a thread waits. Of nested calls it is the innermost.
struct CallStatus {
    std::uint32_t thread; // thread number in the process, by order of creation
    std::uint64_t since; // start of the wait in panel ms
    std::string call; // as the trace shows it: "Sleep[1](1000)"
};

// A process that runs on the panel.
struct ProcessStatus {
    std::string name; // "TarvexHelper.exe#2"
    std::string path;
    std::string commandLine;
    std::int32_t hostPid;
    bool driver; // a test or a `panel` command
    std::uint32_t threads;
    std::uint32_t waiting; // number of threads that wait
    std::uint32_t handles; // number of open handles to kernel objects
    std::vector<CallStatus> calls;
};

// A window of a program.
struct WindowStatus {
    std::string className;
    std::string process;
    bool visible;
};

// A program that has ended.
struct EndedStatus {
    std::string name;
    std::uint32_t exitCode;
    std::uint64_t time; // panel ms
};

// The screen as the user sees it.
struct ScreenStatus {
    std::string cover; // class of the uppermost window that covers the whole screen; empty: no such window
    std::string process; // process of that window
    std::string background; // "black", "white", "none" or "other"
    std::int32_t cursorCount; // the cursor is visible while the count is 0 or more
};

// A named event that was set since boot.
struct SignalStatus {
    std::string event;
    std::uint32_t count; // how often it was set
};

// The state of a panel at one moment, taken under the kernel's lock.
struct PanelStatus {
    ClockMode mode;
    double factor; // panel seconds per real second in flowing mode
    std::uint64_t time; // panel ms since boot
    std::uint32_t ticks; // tick count in ms
    std::int64_t date; // ms since 1970 UTC
    bool tracing;
    std::vector<ProcessStatus> processes;
    std::vector<EndedStatus> ended; // the programs that ended last, in the order of their ends
    std::vector<WindowStatus> windows;
    std::optional<bool> userActive; // empty: the panel has no power manager
    bool flashWritable;
    std::vector<std::uint32_t> backLight; // the four words of the backlight driver's record
    ScreenStatus screen;
    std::string hook; // process of the mouse hook, "TarvexHelper.exe#1"; empty: no hook is installed
    std::vector<SignalStatus> signals; // at most maxSignals events, in the order of their first signal
};

// Reads the state. The caller holds the kernel's lock. The process `self` is left out; 0 leaves out none.
PanelStatus statusOf(Image& image, Slot self);

} // namespace panel
