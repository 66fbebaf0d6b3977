#pragma once

#include <string>

// What the steps of the start-up sequence share.
struct StartupContext {
    StartupContext();

    // Set when the helper does not run from its installation path, so that the installed one must take over.
    bool restartNeeded = false;
    // A backup of the Zentrix runtime, which waits to be put in place of the executable.
    std::wstring zentrixBackupPath;
    std::wstring zentrixExecutablePath;
};
