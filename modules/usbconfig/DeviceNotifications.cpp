#include "modules/usbconfig/DeviceNotifications.h"

#include "OrvaUtils/Text.h"
#include "modules/usbconfig/UsbDeviceException.h"

#include <msgqueue.h>
#include <pnp.h>

#include <cstddef>
#include <cstring>
#include <utility>

namespace {

constexpr GUID BLOCK_DRIVER_GUID = {0xA4E7EDDA, 0xE575, 0x4252, {0x9D, 0x6B, 0x41, 0x95, 0xD4, 0x8B, 0xB8, 0x65}};

// A message has this many bytes at most.
constexpr DWORD MESSAGE_SIZE = 160;
// The name follows the fixed fields of DEVDETAIL. It is 16-bit text that ends with a zero.
constexpr std::size_t NAME_OFFSET = offsetof(DEVDETAIL, szName);

} // namespace

// Deliberate: only -1 counts as a failure of the two calls, although the platform documents null for them. See
// docs/behaviours.md, "Disks: devices".
void DeviceNotifications::start() {
    MSGQUEUEOPTIONS options{};
    options.dwSize = sizeof options;
    options.cbMaxMessage = MESSAGE_SIZE;
    options.bReadAccess = TRUE;
    queueHandle = CreateMsgQueue(nullptr, &options);
    if (queueHandle == INVALID_HANDLE_VALUE) {
        throw UsbDeviceException();
    }
    // TRUE also announces the devices that are present.
    notificationHandle = RequestDeviceNotifications(&BLOCK_DRIVER_GUID, queueHandle, TRUE);
    if (notificationHandle == INVALID_HANDLE_VALUE) {
        CloseHandle(std::exchange(queueHandle, INVALID_HANDLE_VALUE));
        throw UsbDeviceException(L"Request device notifications failed");
    }
    buffer.assign(MESSAGE_SIZE, 0);
}

void DeviceNotifications::stop() {
    if (notificationHandle != INVALID_HANDLE_VALUE) {
        StopDeviceNotifications(std::exchange(notificationHandle, INVALID_HANDLE_VALUE));
    }
    if (queueHandle != INVALID_HANDLE_VALUE) {
        CloseMsgQueue(std::exchange(queueHandle, INVALID_HANDLE_VALUE));
    }
    buffer.clear();
}

HANDLE DeviceNotifications::queue() const {
    return queueHandle;
}

bool DeviceNotifications::read(Message& message) {
    DWORD bytesRead = 0;
    DWORD flags = 0;
    if (!ReadMsgQueue(queueHandle, buffer.data(), MESSAGE_SIZE, &bytesRead, 0, &flags)) {
        return false;
    }
    BOOL attached = FALSE;
    // The buffer need not be aligned for the record.
    std::memcpy(&attached, buffer.data() + offsetof(DEVDETAIL, fAttached), sizeof attached);
    message.attached = attached != FALSE;
    // The text ends at its first zero, which `c_str` finds.
    message.deviceName = OrvaUtils::fromText16(buffer.data() + NAME_OFFSET, MESSAGE_SIZE - NAME_OFFSET).c_str();
    return true;
}
