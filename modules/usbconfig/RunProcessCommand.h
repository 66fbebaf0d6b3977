#pragma once

#include "modules/usbconfig/ICommand.h"

#include <string>

// Starts a program, and waits for its end if it is to. What becomes of it, also that it could not be started, is not
// reported.
struct RunProcessCommand : ICommand {
    int getType() const override;
    // The process's handles stay open until the helper's end.
    void execute() override;

    std::wstring filePath; // empty: the program is the first word of the arguments
    std::wstring arguments;
    bool waitCompletion = false; // however long it takes
};
