// Drivers as files, and how a device that was told to refuse, to block or to take its time does so.
#pragma once

#include "platform/panel/Devices.h"
#include "platform/panel/Gate.h"

namespace panel {

// The driver's handle, or INVALID_HANDLE_VALUE and the last error. Wants the lock; it may wait meanwhile.
HANDLE openDriver(Gate& gate, Lock& lock, const DeviceFacts& device);

// Waits as long as the device does not go on with this operation, and answers its state then; `error` is that of a
// refusal, else 0. Wants the lock; it may wait meanwhile. A state that nobody can read is a std::runtime_error.
DeviceState behavesAs(Gate& gate, Lock& lock, std::string_view device, std::string_view operation, DWORD& error);

} // namespace panel
