#pragma once

#include "modules/MonitorThread.h"
#include "modules/ObserverList.h"
#include "modules/usbconfig/DeviceNotifications.h"
#include "modules/usbconfig/USBDeviceMonitorObserver.h"

// The monitor of block devices: a thread that tells its observers of each volume that becomes available and of each
// device that is detached.
//
// Devices that are present at the start count as attached. The thread handles one device after the other: it waits
// until the device is ready, up to five minutes, and then reports each mounted partition. Later notifications wait in
// the queue. A device that does not become ready, or has no partition, is not reported.
//
// Add observers before `start`. Remove them after `stop`; an observer may also be removed earlier, while the thread may
// be calling it (ObserverList).
//
// Failures throw UsbDeviceException. The monitor can be started only once. It exists without a thread if CreateThread
// fails. If the thread cannot create its queue or request notifications, it logs "Generic Exception" or "Request device
// notifications failed" and ends; the monitor then reports nothing. After a request to stop, the thread first handles
// the messages that have arrived. Deliberate: the handles of the thread and its events are never closed.
class USBDeviceMonitor : public MonitorThread {
public:
    // Throws "Cannot create event".
    USBDeviceMonitor();
    ~USBDeviceMonitor() noexcept(false) {
        stopAtEnd();
    }

    // Adds an observer, which is not owned.
    void addObserver(USBDeviceMonitorObserver* observer);
    // Removes all registrations of an observer.
    void removeObserver(USBDeviceMonitorObserver* observer);

private:
    DWORD watch();
    void readMessage();
    void notify(const USBDeviceEvent& event);

    ObserverList<USBDeviceMonitorObserver> observers;
    DeviceNotifications notifications; // handles that a failure leaves open stay open
};
