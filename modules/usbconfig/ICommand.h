#pragma once

// A command of a configuration file. Its Configuration owns it. The thread of the USB monitor executes it.
struct ICommand {
    virtual ~ICommand() = default;
    // Returns the kind of command: 0 starts a program.
    virtual int getType() const = 0;
    // Carries the command out. Failures are not reported.
    virtual void execute() = 0;
};
