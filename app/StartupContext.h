#pragma once

#include "OrvaUtils/IO/IFileSystem.h"

#include <string>

// What the steps of the start-up sequence share.
struct StartupContext {
    // Set when the helper does not run from its installation path, so that the installed one must take over.
    bool restartNeeded = false;
    // A backup of the Zentrix runtime, which waits to be put in place of the executable.
    std::wstring zentrixBackupPath = inZentrixDirectory(L"_backup_ZentrixHMICE.exe");
    std::wstring zentrixExecutablePath = inZentrixDirectory(L"ZentrixHMICE.exe");

private:
    static std::wstring inZentrixDirectory(const wchar_t* name) {
        return OrvaUtils::IO::getFileSystem().combinePath(L"\\NANDFlash\\ZentrixHMI", name);
    }
};
