#include "modules/usbconfig/MountedVolumes.h"

#include "OrvaUtils/Text.h"
#include "modules/storage/StorageManager.h"

namespace {

constexpr int OPEN_ATTEMPTS = 600;
// The pause in ms before each attempt gives a slow medium time to get ready.
constexpr DWORD OPEN_PAUSE = 500;
constexpr int FIND_ATTEMPTS = 120;

// Closes the store in its destructor.
struct Store {
    HANDLE handle = INVALID_HANDLE_VALUE;

    ~Store() {
        if (handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
    }
};

// Ends the listing in its destructor.
struct PartitionSearch {
    HANDLE handle = INVALID_HANDLE_VALUE;

    ~PartitionSearch() {
        if (handle != INVALID_HANDLE_VALUE) {
            getStorageManager().findClosePartition(handle);
        }
    }
};

// The record holds 16-bit text that ends with a zero.
std::wstring volumeOf(const PARTINFO& partition) {
    const auto* name = reinterpret_cast<const std::uint8_t*>(partition.szVolumeName);
    return OrvaUtils::fromText16(name, sizeof partition.szVolumeName).c_str();
}

} // namespace

void forEachMountedVolume(const std::wstring& deviceName, const std::function<void(const std::wstring&)>& found) {
    Store store;
    for (int attempt = 0; attempt < OPEN_ATTEMPTS && store.handle == INVALID_HANDLE_VALUE; ++attempt) {
        Sleep(OPEN_PAUSE);
        store.handle = getStorageManager().openStore(deviceName);
    }
    // The device has not become ready in five minutes. It is given up without a report.
    if (store.handle == INVALID_HANDLE_VALUE) {
        return;
    }
    PARTINFO partition{};
    partition.cbSize = sizeof partition;
    PartitionSearch search;
    for (int attempt = 0; attempt < FIND_ATTEMPTS && search.handle == INVALID_HANDLE_VALUE; ++attempt) {
        search.handle = getStorageManager().findFirstPartition(store.handle, &partition);
    }
    if (search.handle == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        // Deliberate: there is no wait for a partition that is not mounted yet. It is skipped.
        if ((partition.dwAttributes & PARTITION_ATTRIBUTE_MOUNTED) != 0) {
            found(volumeOf(partition));
        }
    } while (getStorageManager().findNextPartition(search.handle, &partition));
}
