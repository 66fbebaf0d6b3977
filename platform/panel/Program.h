// Programs: what a file is, and how it is started on the panel.
#pragma once

#include "platform/panel/Paths.h"
#include "platform/panel/kernel/Lock.h"

#include <string>
#include <string_view>

namespace panel {

enum class ProgramKind {
    none, // not a program
    native, // made for this machine, takes part in the panel's clock
    panelExecutable, // a PE file for it, whole, which the loader runs: the same as on a real panel
    foreign, // a script, or a program of the host: knows nothing of the panel and does not hold its time
};

ProgramKind kindOf(const std::string& hostPath);

// For people: why this machine cannot run such a file; empty if it can. A panel executable takes an emulator, and the
// loader of the build (or the one that PANEL_LOADER in the environment names).
std::string whyNot(ProgramKind kind);

struct Started {
    Slot process = 0;
    std::uint32_t error = 0; // a Windows error if process is 0
};

// Starts a program by its path on the panel. It stands still until the starting thread waits or ends. Wants the lock.
// What it prints goes to run/output/NAME#START.
Started startProgram(Image& image, const std::string& root, const std::string& path, const std::string& commandLine,
                     Slot starter);

} // namespace panel
