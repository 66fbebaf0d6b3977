#pragma once

#include <cstdint>
#include <string>

// What became of a device. Lives only for the call that tells of it.
struct USBDeviceEvent {
    enum Type : std::uint32_t {
        Attached = 0, // a volume of it has become available
        Detached = 1,
    };

    std::uint32_t type = Attached;
    std::wstring deviceName; // the block driver's, such as "DSK1:"
    std::wstring volumeName; // the mounted folder, such as "Hard Disk"; empty for a device that went
};
