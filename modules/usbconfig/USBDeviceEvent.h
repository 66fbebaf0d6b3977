#pragma once

#include <cstdint>
#include <string>

// An event of a block device. It exists only during the call that passes it.
struct USBDeviceEvent {
    enum Type : std::uint32_t {
        Attached = 0, // a volume of the device is available
        Detached = 1,
    };

    std::uint32_t type = Attached;
    std::wstring deviceName; // of the block driver, for example "DSK1:"
    std::wstring volumeName; // the folder of the volume, for example "Hard Disk"; empty for a detached device
};
