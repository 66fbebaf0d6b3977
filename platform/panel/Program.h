// Functions that recognise and start the programs of a panel.
#pragma once

#include "platform/panel/Paths.h"
#include "platform/panel/kernel/Lock.h"

#include <string>
#include <string_view>

namespace panel {

enum class ProgramKind {
    none, // not a program
    native, // built for this machine with the simulation; takes part in the panel's clock
    panelExecutable, // a complete PE file for the panel, as a real panel runs it; the loader executes it
    foreign, // a script or another program of the host; panel time does not wait for it
};

// Returns the kind of a host file.
ProgramKind kindOf(const std::string& hostPath);

// Returns the reason why this machine cannot run a file of this kind, or "" if it can. A panel executable needs the
// emulator qemu-arm-static and the loader: the one of the build, or the file that PANEL_LOADER in the environment
// names.
std::string whyNot(ProgramKind kind);

// The result of a start: a process or an error.
struct Started {
    Slot process = 0;
    std::uint32_t error = 0; // the Windows error if process is 0
};

// Starts a program by its panel path. The new process does not run before the starting thread waits or ends. Its output
// goes to run/output/NAME#START. Needs the kernel's lock.
Started startProgram(Image& image, const std::string& root, const std::string& path, const std::string& commandLine,
                     Slot starter);

} // namespace panel
