// Opens drivers, and applies the behaviour that `panel device` has given a device: refuse, block or delay.
#pragma once

#include "platform/panel/Devices.h"
#include "platform/panel/Gate.h"

namespace panel {

// Opens a driver for CreateFileW. Returns its handle, or INVALID_HANDLE_VALUE with the last error set. The caller holds
// the lock; the function may leave it while it waits.
HANDLE openDriver(Gate& gate, Lock& lock, const DeviceFacts& device);

// Waits while the device blocks or delays this operation. Returns the device's state at the end of the wait. Stores the
// error of a refusal in `error`, else 0. Throws std::runtime_error if the device's file cannot be read. The caller
// holds the lock; the function may leave it while it waits.
DeviceState behavesAs(Gate& gate, Lock& lock, std::string_view device, std::string_view operation, DWORD& error);

} // namespace panel
