#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

// The platform's notifications of block devices that are attached and detached, received through a message queue.
//
// Only one thread at a time may use the object. The destructor closes nothing: call `stop`.
class DeviceNotifications {
public:
    // One notification.
    struct Message {
        bool attached = false; // false: the device was detached
        std::wstring deviceName; // for example "DSK1:"
    };

    DeviceNotifications() = default;
    DeviceNotifications(const DeviceNotifications&) = delete;
    DeviceNotifications& operator=(const DeviceNotifications&) = delete;

    // Creates the queue and requests notifications. The platform first announces the devices that are present. Throws
    // UsbDeviceException "Generic Exception" if CreateMsgQueue returns -1, and "Request device notifications failed" if
    // RequestDeviceNotifications returns -1. The result null is deliberately not checked.
    void start();
    // Ends the notifications and closes the queue. Does nothing after a failed `start`.
    void stop();

    // Returns the handle to wait for. It is signalled while the queue holds messages.
    HANDLE queue() const;
    // Reads the next message without waiting. Returns false, and leaves `message` unchanged, if there is no message or
    // it does not fit into the buffer.
    bool read(Message& message);

private:
    HANDLE queueHandle = INVALID_HANDLE_VALUE;
    HANDLE notificationHandle = INVALID_HANDLE_VALUE;
    std::vector<std::uint8_t> buffer;
};
