// The processes and threads of a panel, from creation to end. All functions want the lock held.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string>
#include <string_view>

namespace panel::processes {

struct Program {
    std::string path; // on the panel, as it was started by
    std::string commandLine;
    std::uint64_t device = 0; // identity of the executable on the host
    std::uint64_t inode = 0;
    bool aware = true; // takes part in the panel's clock
};

ProcessRecord& at(Image& image, Slot process);

// A process that stands still until letStartedRun(starter), with its first thread (if it is aware), and its process
// object, held by nobody yet. 0 if a table is full.
Slot make(Image& image, const Program& program, Slot starter);
// A test or a panel command: runs at once, outside of the panel's time and power.
// `owns`: what it starts, with all that this starts, ends with it.
Slot makeDriver(Image& image, const Program& program, std::int32_t hostPid, bool owns);
// A further thread of the process, running. 0 if the table is full.
Slot makeThread(Image& image, Slot process);
void endThread(Image& image, Slot thread);

// A created process may begin; its first thread runs from now on.
void letRun(Image& image, Slot process);
// The processes that this thread has started may begin.
void letStartedRun(Image& image, Slot starter);
// Takes the process out of the tables: threads, windows, handles, objects; its process object is signalled. Of a driver
// that owns what it has started: kills that on the host.
void end(Image& image, Slot process, std::uint32_t exitCode);
// Ends the processes that are gone on the host, and wakes whom they had released.
void noticeDead(Image& image);
// Ends one process, on the host too.
void kill(Image& image, Slot process);
// Kills every process of the panel on the host, and leaves the tables alone: no lock, and no trust in what they hold.
// Waits until they are gone.
void killOnHost(const Image& image);
// Ends every process of the panel on the host too, at once; drivers stay. The calling process is left to the caller.
void killAll(Image& image);

// "TarvexHelper.exe#2"
std::string name(const Image& image, const ProcessRecord& process);

inline constexpr std::uint32_t killedExitCode = 0xC0000005; // of a process that did not end by itself

} // namespace panel::processes
