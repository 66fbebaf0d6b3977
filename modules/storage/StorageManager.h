#pragma once

#include "OrvaUtils/DynamicLibrary.h"

#include <storemgr.h>

#include <string>

// The platform's storage manager: stores (block devices) and the partitions on them. It is not linked against but
// looked up in "coredll.dll".
//
// The operations return what the platform answers. For one thread at a time.
class StorageManager {
public:
    // Looks up all functions of the storage manager's interface, also those that nothing here calls. Throws
    // OrvaUtils::LoadLibraryException at the first one that is missing. The program uses the one of
    // `getStorageManager`.
    StorageManager();
    StorageManager(const StorageManager&) = delete;
    StorageManager& operator=(const StorageManager&) = delete;

    // INVALID_HANDLE_VALUE when there is no such store, or not yet. CloseHandle closes it.
    HANDLE openStore(const std::wstring& deviceName) const;
    // The first partition; the record's size must be set. INVALID_HANDLE_VALUE when there is none.
    HANDLE findFirstPartition(HANDLE store, PARTINFO* info) const;
    // False past the last one.
    bool findNextPartition(HANDLE search, PARTINFO* info) const;
    bool findClosePartition(HANDLE search) const;

    static constexpr int FUNCTION_COUNT = 21;

private:
    template<typename Function>
    Function function(int index) const {
        return reinterpret_cast<Function>(functions[index]);
    }

    OrvaUtils::DynamicLibrary library;
    void* functions[FUNCTION_COUNT];
};

// The one storage manager of the process, made at the first call and destroyed at the process's exit. After a call that
// threw, the next one tries again.
StorageManager& getStorageManager();
