#pragma once

#include "modules/usbconfig/ICommand.h"

#include <string>

// Starts a program, and waits for its end if it is to. What becomes of it, also that it could not be started, is not
// reported.
struct RunProcessCommand : ICommand {
    int getType() const override;
    // The process stays open until the helper's end. For one thread at a time.
    void execute() override;

    std::wstring filePath; // empty: the program is the first word of the arguments
    std::wstring arguments;
    bool waitCompletion = false; // however long it takes
};
