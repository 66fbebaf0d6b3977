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
    // MoveFileW never replaces a file, so the executable must go first.
    if (files.isFile(context.zentrixExecutablePath)) {
        files.deleteOrRenameFile(context.zentrixExecutablePath);
    }
    if (!files.moveFile(context.zentrixBackupPath, context.zentrixExecutablePath)) {
        log.writeParts(LogLevel::Error, {L"Failed to cleanup zentrix"});
    }
    makeFlashReadOnly();
    // Deliberate: the line is spelled so, and is also written after a failed move.
    log.writeParts(LogLevel::Info, {L"Zentrix cleanup succeded"});
}
