#include "app/LogSetup.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "app/Paths.h"
#include "app/log/Logger.h"

void configureLog() {
    OrvaUtils::IO::IFileSystem& files = OrvaUtils::IO::getFileSystem();
    // The log does not create its directory.
    if (!files.isDirectory(Paths::INSTALLATION_DIRECTORY)) {
        files.createDirectory(Paths::INSTALLATION_DIRECTORY);
    }
    Logger& log = Logger::instance();
    log.setDirectory(Paths::INSTALLATION_DIRECTORY);
    log.setBaseName(L"helper_log");
    log.setMaxFiles(2);
    log.setMaxFileSize(102400);
    log.setToConsole(false);
    log.setToDebugger(false);
    log.setToFile(true);
}
