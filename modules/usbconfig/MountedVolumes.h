#pragma once

#include <functional>
#include <string>

// Calls `found` with the volume name of each mounted partition of a block device, in the order of the partitions. The
// store of the device is open during these calls. A partition that is not mounted is skipped.
//
// Waits until the device is ready: it tries to open the store 600 times, with a pause of 500 ms before each attempt. If
// the store opens but has no partition, asks for the first partition 120 times without a pause. If that fails too, or
// the store never opens, returns without calling `found`. Blocks the calling thread for up to five minutes.
//
// Throws OrvaUtils::LoadLibraryException if the platform lacks the storage manager. Exceptions of `found` pass through.
void forEachMountedVolume(const std::wstring& deviceName, const std::function<void(const std::wstring&)>& found);
