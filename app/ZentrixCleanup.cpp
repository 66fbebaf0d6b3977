#include "app/ZentrixCleanup.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "app/log/Logger.h"
#include "modules/storage/NandFlash.h"

bool needsZentrixCleanup(const StartupContext& context) {
    return OrvaUtils::IO::getFileSystem().isFile(context.zentrixBackupPath);
}

void cleanupZentrix(const StartupContext& context) {
    Logger& log = Logger::instance();
    OrvaUtils::IO::IFileSystem& files = OrvaUtils::IO::getFileSystem();
    makeFlashWritable();
    if (files.isFile(context.zentrixExecutablePath)) {
        files.deleteOrRenameFile(context.zentrixExecutablePath);
    }
    if (!files.moveFile(context.zentrixBackupPath, context.zentrixExecutablePath)) {
        log.writeParts(LogLevel::Error, {L"Failed to cleanup zentrix"});
    }
    makeFlashReadOnly();
    // Deliberate: spelled so, and also after the failure.
    log.writeParts(LogLevel::Info, {L"Zentrix cleanup succeded"});
}
