#include "modules/usbconfig/MountedVolumes.h"

#include "OrvaUtils/Text.h"
#include "modules/storage/StorageManager.h"

namespace {

constexpr int OPEN_ATTEMPTS = 600;
constexpr DWORD OPEN_PAUSE = 500; // ms, before each of them
constexpr int FIND_ATTEMPTS = 120;

struct Store {
    HANDLE handle = INVALID_HANDLE_VALUE;

    ~Store() {
        if (handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
    }
};

struct PartitionSearch {
    HANDLE handle = INVALID_HANDLE_VALUE;

    ~PartitionSearch() {
        if (handle != INVALID_HANDLE_VALUE) {
            getStorageManager().findClosePartition(handle);
        }
    }
};

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
        // Deliberately not waited for: a partition that is not mounted by now is skipped.
        if ((partition.dwAttributes & PARTITION_ATTRIBUTE_MOUNTED) != 0) {
            found(volumeOf(partition));
        }
    } while (getStorageManager().findNextPartition(search.handle, &partition));
}
