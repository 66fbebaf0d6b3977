#pragma once

#include "modules/usbconfig/ICommand.h"

#include <string>

// A command that starts a program and, if wanted, waits until the program has ended.
//
// A program that cannot be started is not reported, and its exit code is not read.
struct RunProcessCommand : ICommand {
    // Returns 0.
    int getType() const override;
    // Starts the program. The handles of the process stay open until the helper ends.
    void execute() override;

    std::wstring filePath; // if empty, the first word of the arguments names the program
    std::wstring arguments;
    bool waitCompletion = false; // the wait has no limit
};
