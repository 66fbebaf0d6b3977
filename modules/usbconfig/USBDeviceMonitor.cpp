#include "modules/usbconfig/USBDeviceMonitor.h"

#include "app/log/Logger.h"
#include "modules/usbconfig/MountedVolumes.h"
#include "modules/usbconfig/UsbDeviceException.h"

USBDeviceMonitor::USBDeviceMonitor()
    : MonitorThread([](MonitorThread& self) { return static_cast<USBDeviceMonitor&>(self).watch(); },
                    [](const wchar_t* message) { throw UsbDeviceException(message); }, Handles::LeaveOpen) {
    createEvents();
}

void USBDeviceMonitor::addObserver(USBDeviceMonitorObserver* observer) {
    observers.add(observer);
}

void USBDeviceMonitor::removeObserver(USBDeviceMonitorObserver* observer) {
    observers.remove(observer);
}

DWORD USBDeviceMonitor::watch() {
    running = true; // deliberate: never cleared
    notifications.start();
    tellDecision();
    const HANDLE awaited[] = {notifications.queue(), stopEvent};
    DWORD woken = WAIT_FAILED;
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
    if (!notifications.read(message)) {
        return;
    }
    const std::wstring& device = message.deviceName;
    Logger& log = Logger::instance();
    if (!message.attached) {
        log.writeParts(LogLevel::Debug, {L"Detached device ", device});
        notify({USBDeviceEvent::Detached, device, {}});
        return;
    }
    log.writeParts(LogLevel::Debug, {L"Attached device ", device});
    forEachMountedVolume(device, [&](const std::wstring& volume) {
        log.writeParts(LogLevel::Debug, {L"Volume name ", volume});
        notify({USBDeviceEvent::Attached, device, volume});
    });
}

void USBDeviceMonitor::notify(const USBDeviceEvent& event) {
    observers.notify([&](USBDeviceMonitorObserver& observer) { observer.onDeviceEvent(event); });
}
