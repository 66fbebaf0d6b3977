#pragma once

#include <functional>
#include <string>

// Calls `found` with the name of the volume of each mounted partition of a block device that has come, in the order of
// the partitions; with the device's store open.
//
// Waits for a device that is not ready yet: asks every 500 ms, 600 times at most, the first time after 500 ms. A store
// that never opens, and one that shows no partition at 120 requests in a row, has no volumes. Throws
// OrvaUtils::LoadLibraryException on a platform without storage manager, and what `found` throws.
void forEachMountedVolume(const std::wstring& deviceName, const std::function<void(const std::wstring&)>& found);
