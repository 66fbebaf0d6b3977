// The simulated panel of the running test process: created in a fresh directory before anything of the helper runs, in
// stepped mode, removed at the end. The process counts as "\MMCMemory\Tarvex\TarvexHelper.exe" on it. The main thread
// drives the clock: panel time moves only while it waits in a platform call (or in `advance`), and only when all other
// threads wait too.
#pragma once

#include "platform/panel/Driver.h"
#include "tests/support/Folders.h"

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace testing_panel {

// The panel from boot to removal; made once, by the test program's main.
class Session {
public:
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

private:
    const FreshFolder folder;
};

// The simulation's own interface: messages to windows, started programs, status.
panel::Driver& driver();

// Its devices: their state, and what was asked of them.
panel::Devices devices();

std::filesystem::path panelDirectory();
// Where a panel path lies on the host. The path is taken as it is written: no case-blind search.
std::filesystem::path hostPath(std::string_view panelPath);

// A file's bytes; fails the test if it cannot be read.
std::string readFile(std::string_view panelPath);
// Writes it with all missing folders above it, past the simulated API.
void writeFile(std::string_view panelPath, std::string_view content);
// A copy of a file of the host.
void put(std::string_view panelPath, const std::filesystem::path& file);
bool exists(std::string_view panelPath);
// The sorted names in a folder; empty if there is none.
std::vector<std::string> list(std::string_view panelPath);

// Lets panel time pass; the other, until all is quiet.
void advance(std::uint64_t milliseconds);
void pass(std::uint64_t milliseconds);
// Sets the tick count that GetTickCount answers from now on.
void setTicks(std::uint32_t ticks);

// The k-th next call of a platform function in this process fails (in the calling thread); `ever`: and all after it.
void failCall(const char* function, unsigned k = 1, bool ever = false);
// Switches the trace on and forgets what it holds.
void startTrace();
// The calls in the trace since startTrace, each as "Function(arguments) = result"; of these functions, if any are
// named.
Lines trace(std::initializer_list<std::string_view> functions = {});

} // namespace testing_panel
