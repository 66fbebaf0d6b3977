// Controls a panel that is on, for a test or a `panel` command: starts programs, advances time, adds faults. Client.h
// sends messages to windows; Operator.h touches the screen.
//
// A process that creates a Driver is a driver: it joins the panel's table of processes, but panel time does not wait
// for the thread that created the Driver. Other threads of that process count like threads of a program. In stepped
// mode panel time moves only while a driver waits in one of these functions and all threads of programs wait too. A
// process can have one Driver at a time. All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/Panel.h"
#include "platform/panel/PanelStatus.h"
#include "platform/panel/Trace.h"

#include <functional>
#include <optional>

namespace panel {

// A program that a Driver has started.
struct ProcessHandle {
    std::string name; // "TarvexHelper.exe#2": file name and start number
    std::uint32_t handle = 0; // handle to the process object, in the driver's process
    std::int32_t hostPid = 0;
    bool aware = false; // the program takes part in the panel's clock
};

// The start of a program that the registry lists under HKEY_LOCAL_MACHINE\init.
struct InitStart {
    std::uint32_t number = 0; // the NN of "LaunchNN"; it is also the program's argument
    std::string path;
    ProcessHandle process; // its name is empty if the start failed
    std::string failure; // reason of the failure
};

// A fault to inject: a platform call that fails, that waits, or at which the power is cut. With FaultAction::hold the
// call waits before it has any effect. When the call continues, its other faults apply. A power cut comes before the
// call has any effect. There is one exception: with StoragePolicy::torn a cut at a WriteFile comes after the call has
// written its data; this data is not committed.
struct Fault {
    std::string function; // name of the platform function
    std::string program; // file name; empty: every program
    std::uint32_t start = 0; // start number of the program since boot; 0: every start
    std::uint32_t thread = 0; // thread number, by order of creation; 0: every thread
    std::uint32_t call = 1; // number of the call of this function in that thread
    bool ever = false; // the fault also applies to all later calls
    FaultAction action = FaultAction::fail;
    std::uint32_t hits = 0; // how often the fault was applied
    std::uint32_t sectors = 0; // power cut: how many uncommitted sectors of each file stay (StoragePolicy::torn)
    std::optional<std::int64_t> answer = {}; // result of the failing call; empty: the result from coredll.inc
};

class Driver {
public:
    // Says what happens at the end of the driver to the programs that it has started, and to the programs that these
    // have started. `end`: these programs end too, even if the driver is killed. `stay`: these programs continue.
    enum class Programs { end, stay };
    static constexpr const char* command = "\\Windows\\panel.exe"; // the path by which a `panel` command is listed
    // Joins a panel that is on. Throws if the panel is off. Process lists and the trace show the driver under the path
    // `countsAs`.
    explicit Driver(const Panel& panel, const std::string& countsAs = command, Programs programs = Programs::end);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    // Starts a program by its panel path. The program begins to run when this thread waits next. With
    // Programs::stay it begins to run when the driver ends, at the latest.
    ProcessHandle start(const std::string& path, const std::string& commandLine = {});
    // Starts the programs of the "init" list in the order of their numbers, as a panel does after boot. A name without
    // a folder stands for a file in \Windows. "DependNN" is ignored: every program counts as started at once.
    std::vector<InitStart> startInit();
    // Waits for the end of a program and returns its exit code. Returns an empty value if the program still runs after
    // `limit` ms of panel time (real time for a program that does not take part in the panel's clock).
    std::optional<std::uint32_t> waitForExit(const ProcessHandle& process, std::uint32_t limit);
    // Returns the exit code, or an empty value while the program runs.
    std::optional<std::uint32_t> exitCode(const ProcessHandle& process);

    // Lets `milliseconds` of panel time pass.
    void advance(std::uint64_t milliseconds);
    // Stepped mode: waits until all threads of programs wait. Time does not move. Flowing mode: returns at once.
    void settle();
    // Waits until the condition holds and returns true; returns false after `limit` ms of panel time. In stepped mode
    // the condition is checked whenever all threads of programs wait, in flowing mode every 20 ms of panel time, but at
    // most 100 times in a real second.
    bool waitUntil(const std::function<bool()>& condition, std::uint64_t limit);

    // Ends the process "TarvexHelper.exe#2" as a crash would. Returns false if no such process runs.
    bool kill(const std::string& process);

    // Returns whether the panel is still on. Returns false for ever after a shutdown or power cut, even if the panel
    // was booted again.
    bool isOn();
    // Returns the state of the panel. The calling driver itself is left out.
    PanelStatus status();
    void setTicks(std::uint32_t ticks); // sets the current tick count
    // Switches the trace on or off, and does not clear it. `limit`: the size of run/trace in KiB at which the trace
    // switches itself off (Trace.h).
    void setTracing(bool on, std::uint32_t limit = defaultTraceLimit);

    // Adds a fault. Throws if the function is unknown or cannot fail, or if the panel has maxFaults faults.
    void addFault(const Fault& fault);
    // Returns all faults with their hits, in no particular order.
    std::vector<Fault> faults();
    // Lets the held calls go on, and removes the faults that hold calls.
    void releaseCalls();
    // Removes all faults. Held calls go on.
    void clearFaults();

    // Waits until the host processes of ended programs are gone. Their complete output is in run/output then.
    void waitForLingering();

private:
    Panel panel;
};

} // namespace panel
