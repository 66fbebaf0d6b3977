#pragma once

#include "modules/usbconfig/USBDeviceEvent.h"

// Hears from a USBDeviceMonitor, on its thread, one event at a time; the monitor notices nothing else meanwhile. It may
// be deleted during such a call, whose rest must then do without it.
class USBDeviceMonitorObserver {
public:
    // An exception that leaves it is logged and ends the monitor for good.
    virtual void onDeviceEvent(const USBDeviceEvent& event) = 0;
    virtual ~USBDeviceMonitorObserver() noexcept(false) = default;
};
