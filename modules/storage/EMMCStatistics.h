#pragma once

#include <cstdint>
#include <string>

// The write statistics of the panel's eMMC: writes and up-time of the helper, in this session and over the device's
// life. The counts have the unit of the driver.
//
// The file "EMMC.xml" in the installation directory holds each 64-bit count in two halves. Deliberate: `save` divides
// the count by 4294967295 to get the upper half, but `load` multiplies the upper half by 4294967296, so that existing
// files keep their meaning. Some counts of 4294967295 or more therefore grow each time that they are saved and loaded.
//
// One thread at a time may load and save: there is no lock.
struct EMMCStatistics {
    std::uint64_t sessionWriteCount = 0; // the counter of the controller as last read
    std::uint32_t sessionDuration = 0; // seconds
    std::uint64_t totalWriteCount = 0;
    std::uint32_t totalDuration = 0; // seconds

    // Reads the file. Tries three times, with a pause of 100 ms after each failure. Returns zeros if there is no file
    // or all attempts fail; a value that the file lacks is 0.
    static EMMCStatistics load();
    // Replaces the file. Tries three times, with the same pauses, and does not report a failure; saveDocument says what
    // the file then holds. Throws std::bad_alloc, and leaves the file unchanged, if the document does not fit into
    // memory.
    static void save(const EMMCStatistics& statistics);

private:
    bool read(const std::wstring& path);
    bool write(const std::wstring& path) const;
};
