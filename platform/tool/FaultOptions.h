// The fault that a user describes: by the words of `panel fault add`, or by a line of the trace.
#pragma once

#include "platform/tool/Tool.h"

#include <string>
#include <vector>

namespace tool {

// Returns the names of all platform functions.
std::vector<std::string> functionNames();

class FaultOptions {
public:
    // Adds FUNCTION and the options of `panel fault add` to a command. This object must live as long as the command.
    void addTo(CLI::App& command);

    // Returns the fault once the command was parsed. Throws Misuse if there cannot be such a fault.
    panel::Fault fault() const;

    // Parses a fault in one text, for `panel boot --fault`. Throws Misuse for a text that is none of these:
    // - the words of `panel fault add`: "CreateFileW --program TarvexHelper.exe --call 3";
    // - a line of the trace or its beginning, and perhaps options: "TarvexHelper.exe#1 t1 CreateFileW[3] --cut".
    static panel::Fault parse(const std::string& text);

private:
    panel::Fault described;
    std::string from; // a line of the trace
    bool cut = false;
    bool hold = false;
};

} // namespace tool
