#pragma once

#include "OrvaUtils/IO/IFileSystem.h"

#include <string>

// The data that the steps of the start-up sequence share.
struct StartupContext {
    // The sequence sets this if the helper was not started from its installation path. The caller must then start the
    // installed helper.
    bool restartNeeded = false;
    // A backup of the Zentrix runtime. Its existence means that a cleanup is pending.
    std::wstring zentrixBackupPath = inZentrixDirectory(L"_backup_ZentrixHMICE.exe");
    // The executable of the Zentrix runtime, which the backup replaces.
    std::wstring zentrixExecutablePath = inZentrixDirectory(L"ZentrixHMICE.exe");

private:
    static std::wstring inZentrixDirectory(const wchar_t* name) {
        return OrvaUtils::IO::getFileSystem().combinePath(L"\\NANDFlash\\ZentrixHMI", name);
    }
};
