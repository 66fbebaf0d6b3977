// What all commands of `panel` share: which panel is meant, and the exit code.
#pragma once

#include "platform/panel/Driver.h"
#include "platform/panel/Json.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace tool {

// Exit codes: 0, or one of these with one line on standard error. `panel start --wait` answers the program's own exit
// code from 0 to 123.
inline constexpr int failed = 1;
inline constexpr int wrongUsage = 2; // what Misuse says (Units.h)
inline constexpr int limitPassed = 124; // what was waited for has not happened
inline constexpr int notStarted = 125; // start --wait: the program's exit code would be mistaken for a failure's
inline constexpr int codeTooLarge = 126; // start --wait: the program's exit code is above 123; it is printed

class Tool {
public:
    explicit Tool(CLI::App& app); // adds the option that names the panel

    // The panel that -C or the environment names, else the one in the current directory. Throws std::runtime_error,
    // also when another user has booted it.
    panel::Panel panel() const;

    // A command that did its work without success says why on standard error and sets it.
    int exitCode = 0;
    std::vector<std::string> behindDashes; // the command line's words behind "--": for a program to be started
    int failureCode = failed; // for what a command throws

private:
    std::string directory;
};

// One line on standard error, whatever the text holds.
void complain(const std::string& text);

// The answer of a command with --json, on standard output.
void printJson(const panel::Json& answer);

} // namespace tool
