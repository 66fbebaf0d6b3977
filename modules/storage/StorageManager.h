#pragma once

#include "OrvaUtils/DynamicLibrary.h"

#include <storemgr.h>

#include <string>

// The platform's storage manager: stores (block devices) and their partitions.
//
// The functions are not linked, but looked up by name in "coredll.dll". The operations return the results of the
// platform unchanged and do not throw. Only one thread at a time may use the object.
class StorageManager {
public:
    // Looks up all functions of the storage manager, including those that the helper does not call. Throws
    // OrvaUtils::LoadLibraryException for the first function that is missing. Program code uses `getStorageManager`.
    StorageManager();
    StorageManager(const StorageManager&) = delete;
    StorageManager& operator=(const StorageManager&) = delete;

    // Opens the store of a block device. Returns INVALID_HANDLE_VALUE if there is no such store, or it is not ready
    // yet. Close the handle with CloseHandle.
    HANDLE openStore(const std::wstring& deviceName) const;
    // Begins a listing of the store's partitions and writes the first partition to `info`, whose `cbSize` must be set.
    // Returns INVALID_HANDLE_VALUE if there is no partition. Close the listing with `findClosePartition`.
    HANDLE findFirstPartition(HANDLE store, PARTINFO* info) const;
    // Writes the next partition to `info`. Returns false after the last partition.
    bool findNextPartition(HANDLE search, PARTINFO* info) const;
    // Ends a listing.
    bool findClosePartition(HANDLE search) const;

    // The number of functions of the storage manager.
    static constexpr int FUNCTION_COUNT = 21;

private:
    template<typename Function>
    Function function(int index) const {
        return reinterpret_cast<Function>(functions[index]);
    }

    OrvaUtils::DynamicLibrary library;
    void* functions[FUNCTION_COUNT];
};

// Returns the one storage manager of the process. The first call creates it; process exit destroys it. If the
// constructor throws, the next call tries again.
StorageManager& getStorageManager();
