#pragma once

#include <cstdint>
#include <string>

// How much has been written to the panel's eMMC, and how long the helper has been up: in this session, and over the
// device's life. Kept in "EMMC.xml" in the installation directory; the units of the counts are the driver's.
//
// The file holds each 64-bit count in two halves. The upper one is written as the count divided by 4294967295, but read
// as times 4294967296: deliberate, so files keep their meaning. Some counts from 4294967295 on, that one first,
// therefore grow each time that they are saved and loaded.
struct EMMCStatistics {
    std::uint64_t sessionWriteCount = 0; // the controller's counter as last read
    std::uint32_t sessionDuration = 0; // seconds
    std::uint64_t totalWriteCount = 0;
    std::uint32_t totalDuration = 0; // seconds

    // Zeros if there is no file, or if it cannot be read in three attempts; a value that it lacks is 0. Pauses 100 ms
    // after each attempt that has failed.
    static EMMCStatistics load();
    // Replaces the file, in at most three attempts with the same pauses. A failure is silent; what the file then holds
    // says saveDocument. Throws std::bad_alloc when there is no memory for the document; the file is then as it was.
    static void save(const EMMCStatistics& statistics);

private:
    bool read(const std::wstring& path);
    bool write(const std::wstring& path) const;
};
