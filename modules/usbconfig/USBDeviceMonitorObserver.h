#pragma once

#include "modules/usbconfig/USBDeviceEvent.h"

// An observer of a USBDeviceMonitor. The monitor's thread calls it, one event at a time, and handles no other device
// meanwhile. An observer may be deleted during a call; the rest of the call must not use it.
class USBDeviceMonitorObserver {
public:
    // A volume has become available, or a device was detached. An exception that leaves this function is logged and
    // ends the monitor permanently.
    virtual void onDeviceEvent(const USBDeviceEvent& event) = 0;
    virtual ~USBDeviceMonitorObserver() noexcept(false) = default;
};
