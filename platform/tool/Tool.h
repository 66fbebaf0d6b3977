// The state that all commands of `panel` share: the chosen panel and the exit code.
#pragma once

#include "platform/panel/Driver.h"
#include "platform/panel/Json.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace tool {

// Exit codes of `panel`. 0 means success. The other codes come with one line on standard error. `panel start --wait`
// also returns the program's own exit code, 0 to 123.
inline constexpr int failed = 1;
inline constexpr int wrongUsage = 2; // a Misuse (Units.h)
inline constexpr int limitPassed = 124; // a time-out has passed
inline constexpr int notStarted = 125; // start --wait: 1 could be the program's own exit code
inline constexpr int codeTooLarge = 126; // start --wait: the program's exit code is above 123; it is printed

// Returns the version of this program and of the kernel files that it can read.
std::string version();

class Tool {
public:
    // Adds the option -C to the application.
    explicit Tool(CLI::App& app);

    // Returns the panel that -C or PANEL in the environment names, or else the panel in the current directory. Throws
    // std::runtime_error if that is not a panel, or if another user has booted it.
    panel::Panel panel() const;

    // Exit code of a command that returns normally. A command that sets it also prints the reason on standard error.
    int exitCode = 0;
    std::vector<std::string> behindDashes; // words behind "--": arguments of the program to be started
    int failureCode = failed; // exit code of a command that throws

private:
    std::string directory;
};

// Returns the text with its control characters escaped, such as \n and \x0d.
std::string oneLine(const std::string& text);

// Prints "panel: TEXT" as one line on standard error.
void complain(const std::string& text);

// Prints the output of a command with --json to standard output.
void printJson(const panel::Json& answer);
// Prints one of several answers as one line.
void printJsonLine(const panel::Json& answer);

} // namespace tool
