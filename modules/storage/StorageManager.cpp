#include "modules/storage/StorageManager.h"

namespace {

// The functions in the order of the storage manager's interface, which is also the order of the look-up. Deliberate:
// all functions are looked up, although only four are called.
constexpr const wchar_t* NAMES[] = {
    L"OpenStore",          L"DismountStore",   L"FormatStore",       L"FindFirstStore",     L"FindNextStore",
    L"FindCloseStore",     L"GetStoreInfo",    L"CreatePartition",   L"CreatePartitionEx",  L"DeletePartition",
    L"OpenPartition",      L"MountPartition",  L"DismountPartition", L"RenamePartition",    L"SetPartitionAttributes",
    L"GetPartitionInfo",   L"FormatPartition", L"FormatPartitionEx", L"FindFirstPartition", L"FindNextPartition",
    L"FindClosePartition",
};
static_assert(sizeof NAMES / sizeof *NAMES == StorageManager::FUNCTION_COUNT);

// The indexes of the functions that are called.
constexpr int OPEN_STORE = 0;
constexpr int FIND_FIRST_PARTITION = 18;
constexpr int FIND_NEXT_PARTITION = 19;
constexpr int FIND_CLOSE_PARTITION = 20;

} // namespace

StorageManager::StorageManager() : library(L"coredll.dll", OrvaUtils::DynamicLibrary::Lifetime::Process) {
    for (int index = 0; index < FUNCTION_COUNT; ++index) {
        functions[index] = library.getAddress(NAMES[index]);
    }
}

HANDLE StorageManager::openStore(const std::wstring& deviceName) const {
    return function<decltype(&OpenStore)>(OPEN_STORE)(deviceName.c_str());
}

HANDLE StorageManager::findFirstPartition(HANDLE store, PARTINFO* info) const {
    return function<decltype(&FindFirstPartition)>(FIND_FIRST_PARTITION)(store, info);
}

bool StorageManager::findNextPartition(HANDLE search, PARTINFO* info) const {
    return function<decltype(&FindNextPartition)>(FIND_NEXT_PARTITION)(search, info) != FALSE;
}

bool StorageManager::findClosePartition(HANDLE search) const {
    return function<decltype(&FindClosePartition)>(FIND_CLOSE_PARTITION)(search) != FALSE;
}

StorageManager& getStorageManager() {
    static StorageManager manager;
    return manager;
}
