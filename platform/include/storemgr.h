// The storage manager: stores (block devices) and their partitions. Not in every import library, so programs look these
// functions up by name in coredll.dll.
#pragma once

#include <windows.h>

inline constexpr DWORD PARTITION_ATTRIBUTE_MOUNTED = 0x10;

// [ms891424] Texts have 16 bits a character on both platforms and end with a zero.
struct PARTINFO {
    DWORD cbSize; // of this record, bytes; set by the caller
    std::uint16_t szPartitionName[32];
    std::uint16_t szFileSys[32];
    std::uint16_t szVolumeName[64]; // the mount folder, such as "\Hard Disk"
    std::uint64_t snNumSectors;
    FILETIME ftCreation;
    FILETIME ftLastModified;
    DWORD dwAttributes;
    BYTE bPartType;
};
static_assert(offsetof(PARTINFO, szPartitionName) == 4 && offsetof(PARTINFO, szFileSys) == 68 &&
              offsetof(PARTINFO, szVolumeName) == 132 && offsetof(PARTINFO, snNumSectors) == 264 &&
              offsetof(PARTINFO, ftCreation) == 272 && offsetof(PARTINFO, ftLastModified) == 280 &&
              offsetof(PARTINFO, dwAttributes) == 288 && offsetof(PARTINFO, bPartType) == 292);
static_assert(sizeof(PARTINFO) == 296);

struct STOREINFO;

extern "C" {

HANDLE WINAPI OpenStore(LPCWSTR device) noexcept; // INVALID_HANDLE_VALUE on failure [ms889968]; closed by CloseHandle
BOOL WINAPI DismountStore(HANDLE store) noexcept;
BOOL WINAPI FormatStore(HANDLE store) noexcept;
HANDLE WINAPI FindFirstStore(STOREINFO* info) noexcept; // INVALID_HANDLE_VALUE on failure
BOOL WINAPI FindNextStore(HANDLE search, STOREINFO* info) noexcept;
BOOL WINAPI FindCloseStore(HANDLE search) noexcept;
BOOL WINAPI GetStoreInfo(HANDLE store, STOREINFO* info) noexcept;
BOOL WINAPI CreatePartition(HANDLE store, LPCWSTR partition, std::uint64_t sectors) noexcept;
BOOL WINAPI CreatePartitionEx(HANDLE store, LPCWSTR partition, DWORD type, std::uint64_t sectors) noexcept;
BOOL WINAPI DeletePartition(HANDLE store, LPCWSTR partition) noexcept;
HANDLE WINAPI OpenPartition(HANDLE store, LPCWSTR partition) noexcept; // INVALID_HANDLE_VALUE on failure
BOOL WINAPI MountPartition(HANDLE partition) noexcept;
BOOL WINAPI DismountPartition(HANDLE partition) noexcept;
BOOL WINAPI RenamePartition(HANDLE partition, LPCWSTR name) noexcept;
BOOL WINAPI SetPartitionAttributes(HANDLE partition, DWORD attributes) noexcept;
BOOL WINAPI GetPartitionInfo(HANDLE partition, PARTINFO* info) noexcept;
BOOL WINAPI FormatPartition(HANDLE partition) noexcept;
BOOL WINAPI FormatPartitionEx(HANDLE partition, BYTE type, BOOL automatic) noexcept;
// INVALID_HANDLE_VALUE on failure [ms889689]
HANDLE WINAPI FindFirstPartition(HANDLE store, PARTINFO* info) noexcept;
BOOL WINAPI FindNextPartition(HANDLE search, PARTINFO* info) noexcept;
BOOL WINAPI FindClosePartition(HANDLE search) noexcept;

} // extern "C"
