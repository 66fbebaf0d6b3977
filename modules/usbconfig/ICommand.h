#pragma once

// A command of a configuration file.
struct ICommand {
    virtual ~ICommand() = default;
    // Which kind of command it is; 0: starts a program.
    virtual int getType() const = 0;
    virtual void execute() = 0;
};
