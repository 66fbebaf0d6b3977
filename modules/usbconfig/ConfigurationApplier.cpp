#include "modules/usbconfig/ConfigurationApplier.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "app/log/Logger.h"
#include "modules/usbconfig/Configuration.h"
#include "modules/usbconfig/InvalidLoginException.h"
#include "modules/usbconfig/USBDeviceMonitor.h"

namespace {

// The work of a notification is done by these free functions: the module may be deleted before they end.
void logDebug(std::wstring_view text) {
    Logger::instance().writeParts(LogLevel::Debug, {text});
}

void logEvent(const USBDeviceEvent& event) {
    Logger::instance().writeParts(LogLevel::Debug,
                                  {event.type == USBDeviceEvent::Attached ? L"Device Attached" : L"Device Detached",
                                   L" : ", event.deviceName, L" - ", event.volumeName});
}

void logFailure(const std::wstring& text) {
    Logger::instance().writeParts(LogLevel::Error, {L"XML configuration;error;", text});
}

// The event of a detached device has an empty volume name and is therefore ignored.
bool isDisk(const std::wstring& volume) {
    return volume.find(L"Hard Disk") != std::wstring::npos || volume.find(L"USB Disk") != std::wstring::npos;
}

// Deliberate: the login and the users of the file are read but never checked.
void apply(const Configuration& configuration) {
    if (configuration.sections.count(L"Commands") == 0) {
        return;
    }
    for (const std::unique_ptr<ICommand>& command : configuration.commands) {
        command->execute();
    }
}

void applyFile(const std::wstring& path) {
    try {
        // The whole file is read before the first program starts, so a faulty file starts nothing.
        const Configuration configuration(path);
        apply(configuration);
    } catch (const InvalidLoginException&) {
        // Deliberate: no code throws this exception yet; its text is kept.
        logFailure(L"Invalid login");
    } catch (const OrvaUtils::Exception& exception) {
        logFailure(exception.message());
    }
}

} // namespace

IModule* ConfigurationApplier::create(USBDeviceMonitor& monitor) {
    return new ConfigurationApplier(monitor);
}

ConfigurationApplier::ConfigurationApplier(USBDeviceMonitor& monitor) : observed(&monitor) {
    observed->addObserver(this);
}

ConfigurationApplier::~ConfigurationApplier() {
    observed->removeObserver(this);
}

void ConfigurationApplier::onDeviceEvent(const USBDeviceEvent& event) {
    // This is the last use of the object: the helper's end can delete it while a command runs.
    observed->leaveObserver();
    logEvent(event);
    if (!isDisk(event.volumeName)) {
        return;
    }
    OrvaUtils::IO::IFileSystem& files = OrvaUtils::IO::getFileSystem();
    const std::wstring path = files.combinePath(event.volumeName, L"Tarvex.xml");
    if (!files.isFile(path)) {
        logDebug(L"File not found");
        return;
    }
    logDebug(L"File found");
    applyFile(path);
}
