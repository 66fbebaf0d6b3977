#include "app/StartupContext.h"

#include "OrvaUtils/IO/IFileSystem.h"

namespace {

constexpr wchar_t ZENTRIX_DIRECTORY[] = L"\\NANDFlash\\ZentrixHMI";

std::wstring inZentrixDirectory(const wchar_t* name) {
    return OrvaUtils::IO::getFileSystem().combinePath(ZENTRIX_DIRECTORY, name);
}

} // namespace

StartupContext::StartupContext()
    : zentrixBackupPath(inZentrixDirectory(L"_backup_ZentrixHMICE.exe")),
      zentrixExecutablePath(inZentrixDirectory(L"ZentrixHMICE.exe")) {}
