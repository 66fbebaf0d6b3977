#include "modules/usbconfig/USBDeviceMonitor.h"

#include "app/log/Logger.h"
#include "modules/usbconfig/MountedVolumes.h"
#include "modules/usbconfig/UsbDeviceException.h"

USBDeviceMonitor::USBDeviceMonitor()
    : MonitorThread([](MonitorThread& self) { return static_cast<USBDeviceMonitor&>(self).watch(); },
                    [](const wchar_t* message) { throw UsbDeviceException(message); }, Handles::LeaveOpen) {
    // The destructor of the base class leaves the handles open, unless this call fails.
    createEvents();
}

void USBDeviceMonitor::addObserver(USBDeviceMonitorObserver* observer) {
    observers.add(observer);
}

void USBDeviceMonitor::removeObserver(USBDeviceMonitorObserver* observer) {
    constexpr DWORD REMOVAL_LIMIT = 20000; // ms
    observers.remove(observer);
    observers.waitForVisits(observer, REMOVAL_LIMIT);
}

void USBDeviceMonitor::leaveObserver() {
    visit->end();
}

DWORD USBDeviceMonitor::watch() {
    // Deliberate: `running` is never cleared, so the monitor starts only once.
    running = true;
    notifications.start();
    tellDecision();
    const HANDLE awaited[] = {notifications.queue(), stopEvent};
    DWORD woken = WAIT_FAILED;
    // The loop ends with the stop event. A failed wait is repeated at once.
    while (woken != WAIT_OBJECT_0 + 1) {
        woken = WaitForMultipleObjects(2, awaited, FALSE, INFINITE);
        if (woken == WAIT_OBJECT_0) {
            readMessage();
        }
    }
    notifications.stop();
    return 0;
}

void USBDeviceMonitor::readMessage() {
    DeviceNotifications::Message message;
    // A message that cannot be read is skipped.
    if (!notifications.read(message)) {
        return;
    }
    const std::wstring& device = message.deviceName;
    Logger& log = Logger::instance();
    if (!message.attached) {
        log.writeParts(LogLevel::Debug, {L"Detached device ", device});
        // A detached device has no volume any more, so the volume name stays empty.
        notify({USBDeviceEvent::Detached, device, {}});
        return;
    }
    log.writeParts(LogLevel::Debug, {L"Attached device ", device});
    // This call may block the thread for minutes. Later messages wait in the queue.
    forEachMountedVolume(device, [&](const std::wstring& volume) {
        log.writeParts(LogLevel::Debug, {L"Volume name ", volume});
        notify({USBDeviceEvent::Attached, device, volume});
    });
}

void USBDeviceMonitor::notify(const USBDeviceEvent& event) {
    observers.notify([&](USBDeviceMonitorObserver& observer, Observers::Visit& current) {
        visit = &current;
        observer.onDeviceEvent(event);
    });
}
