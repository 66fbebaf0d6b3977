#include "app/StartupSequence.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "OrvaUtils/Registry/Registry.h"
#include "OrvaUtils/Text.h"
#include "app/Autorun.h"
#include "app/FileAssociation.h"
#include "app/HelperSettings.h"
#include "app/Installation.h"
#include "app/Launch.h"
#include "app/Paths.h"
#include "app/ZentrixCleanup.h"
#include "app/log/Logger.h"

namespace {

void runInstalled(const StartupContext& context) {
    Logger& log = Logger::instance();
    cleanupRegisteredDirectories();
    if (needsZentrixCleanup(context)) {
        log.writeParts(LogLevel::Info, {L"Zentrix needs a cleanup"});
        cleanupZentrix(context);
    }
    if (!isAutorunConfigured()) {
        log.writeParts(LogLevel::Info, {L"Configuring my autorun"});
        configureAutorun();
    }
    if (!isAssociationConfigured()) {
        log.writeParts(LogLevel::Info, {L"Associate .osr file to Tarvex.exe"});
        configureAssociation();
        OrvaUtils::Registry::flushKey(HKEY_CLASSES_ROOT);
    }
    // The document is saved in every start, before the application starts.
    HelperSettings::instance().save();
    if (HelperSettings::instance().requestInProgress() != nullptr) {
        log.writeParts(LogLevel::Info, {L"Follow up needed"});
        startApplication();
    }
}

void runElsewhere(StartupContext& context) {
    Logger& log = Logger::instance();
    OrvaUtils::IO::IFileSystem& files = OrvaUtils::IO::getFileSystem();
    // The text is only built if the log writes it.
    if (log.admits(LogLevel::Info)) {
        log.writeParts(LogLevel::Info,
                       {L"I am not executing from the right path (", files.getDirectoryPart(ownExecutable()), L")"});
    }
    // An installed helper is not replaced: only the deletion and the hand-over follow.
    if (!files.isFile(Paths::HELPER)) {
        log.writeParts(LogLevel::Info, {L"Installing tarvex in the right path"});
        installApplication();
    }
    registerStartLocationForCleanup();
    context.restartNeeded = true;
}

} // namespace

void RunStartupSequence(StartupContext& context) {
    if (OrvaUtils::equalIgnoringCase(ownExecutable(), Paths::HELPER)) {
        runInstalled(context);
    } else {
        runElsewhere(context);
    }
}
