#pragma once

#include "modules/IModule.h"
#include "modules/usbconfig/USBDeviceMonitorObserver.h"

class USBDeviceMonitor;

// Carries out the file "Tarvex.xml" in the root of each USB disk or hard disk that is mounted: starts the programs that
// its commands name, one after the other. A file with a fault starts nothing and is logged in one line.
//
// Its work runs on the monitor's thread, within the notification, and keeps that thread for as long as a program that
// is to be waited for runs; the module may be deleted meanwhile.
class ConfigurationApplier : public USBDeviceMonitorObserver, public IModule {
public:
    // The module, which observes the monitor until it is deleted; the monitor must live longer.
    static IModule* create(USBDeviceMonitor& monitor);

    ~ConfigurationApplier() override;

    void onDeviceEvent(const USBDeviceEvent& event) override;

private:
    explicit ConfigurationApplier(USBDeviceMonitor& monitor);

    USBDeviceMonitor* observed;
};
