#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

// The platform's messages about block devices that come and go. For one thread at a time. The destructor closes
// nothing.
class DeviceNotifications {
public:
    struct Message {
        bool attached = false; // else it went
        std::wstring deviceName;
    };

    DeviceNotifications() = default;
    DeviceNotifications(const DeviceNotifications&) = delete;
    DeviceNotifications& operator=(const DeviceNotifications&) = delete;

    // From here on messages come; the first ones are about the devices that are present. Throws UsbDeviceException:
    // "Generic Exception" without a queue, "Request device notifications failed".
    void start();
    void stop();

    // What to wait for: set while there are messages.
    HANDLE queue() const;
    // The next message. False, and the message as it was, when there is none or it does not fit.
    bool read(Message& message);

private:
    HANDLE queueHandle = INVALID_HANDLE_VALUE;
    HANDLE notificationHandle = INVALID_HANDLE_VALUE;
    std::vector<std::uint8_t> buffer;
};
