#pragma once

#include "modules/MonitorThread.h"
#include "modules/ObserverList.h"
#include "modules/usbconfig/DeviceNotifications.h"
#include "modules/usbconfig/USBDeviceMonitorObserver.h"

// Watches, on a thread of its own, which block devices come and go, and tells its observers of each volume that has
// become available and of each device that went.
//
// The devices that are present when it starts count as coming. For one device after the other it waits until the device
// is ready, up to five minutes, and then tells of each mounted partition; what happens meanwhile is told afterwards. A
// device that does not get ready, or has no partition, is not told of.
//
// Observers are added before the start and removed after the stop, or even before it, while the thread may still be
// calling them (ObserverList). Its failures are UsbDeviceExceptions. It starts once: it cannot be started again after a
// stop. It lives on without a thread that the platform does not make, or when there is no queue ("Generic Exception" in
// the log) or no notification ("Request device notifications failed"), and tells of nothing then. After a request to
// stop the thread first works off what has been announced. Deliberate: the handles of thread and events are never
// closed.
class USBDeviceMonitor : public MonitorThread {
public:
    // Throws "Cannot create event".
    USBDeviceMonitor();
    ~USBDeviceMonitor() noexcept(false) {
        stopAtEnd();
    }

    void addObserver(USBDeviceMonitorObserver* observer);
    void removeObserver(USBDeviceMonitorObserver* observer);

private:
    DWORD watch();
    void readMessage();
    void notify(const USBDeviceEvent& event);

    ObserverList<USBDeviceMonitorObserver> observers;
    DeviceNotifications notifications; // those that a failure has left open stay open
};
