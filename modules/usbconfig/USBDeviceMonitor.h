#pragma once

#include "modules/MonitorThread.h"
#include "modules/ObserverList.h"
#include "modules/usbconfig/DeviceNotifications.h"
#include "modules/usbconfig/USBDeviceMonitorObserver.h"

// The monitor of block devices: it notifies its observers of each volume that becomes available and of each device that
// is detached. A block device is a disk; each mounted partition of a disk is a volume.
//
// Threads: the owner thread calls all operations. The monitor's thread receives the platform's notifications and calls
// the observers. It handles one notification at a time; later notifications wait in the platform's queue. Devices that
// are present at the start are announced like attached devices. For an attached device the thread waits until the
// device is ready, up to five minutes, and then reports each mounted partition. A device that does not become ready, or
// has no mounted partition, is not reported.
//
// Add observers before `start`. An observer may be removed and deleted at any time, even while the thread calls it.
//
// The monitor can be started only once. `stop` lets the thread first handle all notifications that are already in the
// queue.
//
// Errors: the operations throw UsbDeviceException. If CreateThread fails, `start` returns true nevertheless, and the
// monitor never calls an observer. The same happens if CreateMsgQueue or RequestDeviceNotifications returns -1: the
// thread logs "Generic Exception" or "Request device notifications failed" and ends. The result null is deliberately
// not checked (docs/behaviours.md). Deliberate: the handles of the thread and its events are never closed.
class USBDeviceMonitor : public MonitorThread {
public:
    // Throws "Cannot create event".
    USBDeviceMonitor();
    ~USBDeviceMonitor() noexcept(false) {
        stopAtEnd();
    }

    // Adds an observer, which is not owned.
    void addObserver(USBDeviceMonitorObserver* observer);
    // Removes all registrations of an observer. If the thread is calling the observer, waits until the call has ended
    // or has left the observer, at most about 20000 ms. Then the observer can be deleted.
    void removeObserver(USBDeviceMonitorObserver* observer);
    // Called by an observer, and only during its notification: the rest of the notification does not use the observer.
    void leaveObserver();

private:
    DWORD watch();
    void readMessage();
    void notify(const USBDeviceEvent& event);

    using Observers = ObserverList<USBDeviceMonitorObserver>;

    Observers observers;
    Observers::Visit* visit = nullptr; // of the notification in progress; only the monitor's thread uses it
    DeviceNotifications notifications; // after an exception in the thread its handles stay open
};
