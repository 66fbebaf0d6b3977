// The storage manager: stores (block devices) and their partitions.
//
// Not every import library lists these functions, so programs look them up by name in coredll.dll. Unless a comment
// says otherwise, a function returns FALSE on failure and sets the last error.
//
// The simulated panel implements OpenStore and the search for partitions. All other functions fail there with
// ERROR_NOT_SUPPORTED.
#pragma once

#include <windows.h>

inline constexpr DWORD PARTITION_ATTRIBUTE_MOUNTED = 0x10;

// A partition's description [ms891424]. Texts have 16 bits per character on both platforms and end with a zero.
struct PARTINFO {
    DWORD cbSize; // size of this record in bytes; the caller sets it
    std::uint16_t szPartitionName[32];
    std::uint16_t szFileSys[32];
    std::uint16_t szVolumeName[64]; // the mount folder, such as "\Hard Disk"
    std::uint64_t snNumSectors; // size of the partition in sectors
    FILETIME ftCreation;
    FILETIME ftLastModified;
    DWORD dwAttributes; // PARTITION_ATTRIBUTE_* bits
    BYTE bPartType;
};
static_assert(offsetof(PARTINFO, szPartitionName) == 4 && offsetof(PARTINFO, szFileSys) == 68 &&
              offsetof(PARTINFO, szVolumeName) == 132 && offsetof(PARTINFO, snNumSectors) == 264 &&
              offsetof(PARTINFO, ftCreation) == 272 && offsetof(PARTINFO, ftLastModified) == 280 &&
              offsetof(PARTINFO, dwAttributes) == 288 && offsetof(PARTINFO, bPartType) == 292);
static_assert(sizeof(PARTINFO) == 296);

struct STOREINFO;

extern "C" {

// Opens the store of a block device such as "DSK1:". Close the handle with CloseHandle.
// Returns INVALID_HANDLE_VALUE on failure: ERROR_NOT_READY while the device is not ready [ms889968].
HANDLE WINAPI OpenStore(LPCWSTR device) noexcept;
BOOL WINAPI DismountStore(HANDLE store) noexcept;
BOOL WINAPI FormatStore(HANDLE store) noexcept;
// Lists the stores. FindFirstStore returns INVALID_HANDLE_VALUE on failure.
HANDLE WINAPI FindFirstStore(STOREINFO* info) noexcept;
BOOL WINAPI FindNextStore(HANDLE search, STOREINFO* info) noexcept;
BOOL WINAPI FindCloseStore(HANDLE search) noexcept;
BOOL WINAPI GetStoreInfo(HANDLE store, STOREINFO* info) noexcept;
BOOL WINAPI CreatePartition(HANDLE store, LPCWSTR partition, std::uint64_t sectors) noexcept;
BOOL WINAPI CreatePartitionEx(HANDLE store, LPCWSTR partition, DWORD type, std::uint64_t sectors) noexcept;
BOOL WINAPI DeletePartition(HANDLE store, LPCWSTR partition) noexcept;
// Opens a partition by its name. Returns INVALID_HANDLE_VALUE on failure.
HANDLE WINAPI OpenPartition(HANDLE store, LPCWSTR partition) noexcept;
BOOL WINAPI MountPartition(HANDLE partition) noexcept;
BOOL WINAPI DismountPartition(HANDLE partition) noexcept;
BOOL WINAPI RenamePartition(HANDLE partition, LPCWSTR name) noexcept;
BOOL WINAPI SetPartitionAttributes(HANDLE partition, DWORD attributes) noexcept;
BOOL WINAPI GetPartitionInfo(HANDLE partition, PARTINFO* info) noexcept;
BOOL WINAPI FormatPartition(HANDLE partition) noexcept;
BOOL WINAPI FormatPartitionEx(HANDLE partition, BYTE type, BOOL automatic) noexcept;

// Lists the partitions of a store. FindFirstPartition returns INVALID_HANDLE_VALUE on failure [ms889689].
// FindNextPartition returns FALSE with ERROR_NO_MORE_FILES after the last partition. FindClosePartition closes the
// search handle.
HANDLE WINAPI FindFirstPartition(HANDLE store, PARTINFO* info) noexcept;
BOOL WINAPI FindNextPartition(HANDLE search, PARTINFO* info) noexcept;
BOOL WINAPI FindClosePartition(HANDLE search) noexcept;

} // extern "C"
