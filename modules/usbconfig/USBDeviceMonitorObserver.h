#pragma once

#include "modules/usbconfig/USBDeviceEvent.h"

// An observer of a USBDeviceMonitor. The monitor's thread calls it for one event at a time and handles no other device
// during the call. If an observer is deleted while a call is in progress, the rest of the call must not use the
// observer's data.
class USBDeviceMonitorObserver {
public:
    // A volume has become available, or a device was detached. An exception that leaves this function is logged and
    // ends the monitor permanently.
    virtual void onDeviceEvent(const USBDeviceEvent& event) = 0;
    virtual ~USBDeviceMonitorObserver() noexcept(false) = default;
};
