#pragma once

#include "modules/usbconfig/USBDeviceMonitorObserver.h"

// Watches, on a thread of its own, which block devices come and go, and tells its observers of each volume that has
// become available and of each device that went.
//
// The devices that are present when it starts count as coming. For one device after the other it waits until the device
// is ready, up to five minutes, and then tells of each mounted partition; what happens meanwhile is told afterwards. A
// device that does not get ready, or has no partition, is not told of.
//
// Its owner calls everything here on one thread: observers are added before the start and removed after the stop, or
// even before it, while the thread may still be calling them.
class USBDeviceMonitor {
public:
    // Throws UsbDeviceException "Cannot create event".
    USBDeviceMonitor();
    USBDeviceMonitor(const USBDeviceMonitor&) = delete;
    USBDeviceMonitor& operator=(const USBDeviceMonitor&) = delete;
    // Stops, and throws as `stop` does, unless an exception is in flight.
    ~USBDeviceMonitor() noexcept(false);

    // Observers are not owned and hear each event in the order of their registration, as often as they were added.
    void addObserver(USBDeviceMonitorObserver* observer);
    // As often as it was added. It is not called any more, unless it is about to be called in that moment.
    void removeObserver(USBDeviceMonitorObserver* observer);

    // False when it was started before. Returns when the thread hears of devices, or has given up: an ERROR line then
    // says why ("Generic Exception": no message queue; "Request device notifications failed"), and nothing is watched.
    // A thread that the platform does not make is not missed.
    bool start();
    // Waits for the thread, at most 20000 ms; throws UsbDeviceException "Failed to terminate monitor thread" if that is
    // not enough, and can be called again. The thread ends when it has worked off what has been announced.
    void stop();

private:
    class Watch;

    Watch& watch;
};
