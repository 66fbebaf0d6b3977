// The processes and threads of a panel, from creation to end. All functions need the kernel's lock, except killOnHost.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string>
#include <string_view>

namespace panel::processes {

// A program to be started.
struct Program {
    std::string path; // the panel path by which it is started
    std::string commandLine;
    std::uint64_t device = 0; // identity of the executable on the host
    std::uint64_t inode = 0;
    bool aware = true; // the program takes part in the panel's clock
};

ProcessRecord& at(Image& image, Slot process);

// Creates a process with its process object and, if it is aware, its first thread. The process does not run before the
// call of letStartedRun(starter). Its process object has no holder yet. Returns 0 if a table is full.
Slot make(Image& image, const Program& program, Slot starter);
// Creates the record of a driver (a test or a `panel` command). It runs at once. Panel time does not wait for it, and a
// power cut does not end it. With `owns` the programs that it starts, and the programs that these start, end with it.
Slot makeDriver(Image& image, const Program& program, std::int32_t hostPid, bool owns);
// Creates a further thread of the process, which runs. Returns 0 if the table is full.
Slot makeThread(Image& image, Slot process);
// Removes a thread with its windows and messages.
void endThread(Image& image, Slot thread);

// Lets a created process begin. Its first thread counts as running from now on.
void letRun(Image& image, Slot process);
// Lets all processes begin that this thread has started.
void letStartedRun(Image& image, Slot starter);
// Removes a process from the tables: threads, windows, handles. Signals its process object. If the process is a driver
// that owns programs, kills these on the host.
void end(Image& image, Slot process, std::uint32_t exitCode);
// Removes the processes that have ended on the host, and wakes the threads that they had released.
void noticeDead(Image& image);
// Ends a process of the panel and kills it on the host.
void kill(Image& image, Slot process);
// Kills every program of the panel on the host and waits up to 5 s for the end of each. Neither takes the lock nor
// changes the tables, and does not rely on their content.
void killOnHost(const Image& image);
// Ends every program of the panel and kills it on the host; drivers stay. The caller must end its own process itself.
void killAll(Image& image);

// Returns the process's name with its start number: "TarvexHelper.exe#2".
std::string name(const Image& image, const ProcessRecord& process);

inline constexpr std::uint32_t killedExitCode = 0xC0000005; // exit code of a process that was killed or crashed

} // namespace panel::processes
