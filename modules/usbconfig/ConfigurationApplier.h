#pragma once

#include "modules/IModule.h"
#include "modules/usbconfig/USBDeviceMonitorObserver.h"

class USBDeviceMonitor;

// The configuration applier: a module that carries out the file "Tarvex.xml" in the root of each USB disk or hard disk
// that is mounted. It starts the programs of the file's commands one after the other, without checking login or users.
// If the file is malformed, it starts no program and logs one line at ERROR.
//
// The work runs on the thread of the USB monitor, within the notification. If a command waits for its program, the
// thread is blocked meanwhile. The module may be deleted during that time: the rest of the notification does not use
// it.
class ConfigurationApplier : public USBDeviceMonitorObserver, public IModule {
public:
    // Creates a module and registers it with the monitor. The caller owns the module. The monitor is not owned and must
    // live longer.
    static IModule* create(USBDeviceMonitor& monitor);

    // Removes itself from the monitor.
    ~ConfigurationApplier() override;

    // Looks for the file on the volume of the event and carries it out. An OrvaUtils::Exception is logged and not
    // thrown; other exceptions, such as std::bad_alloc, pass through.
    void onDeviceEvent(const USBDeviceEvent& event) override;

private:
    explicit ConfigurationApplier(USBDeviceMonitor& monitor);

    USBDeviceMonitor* observed;
};
