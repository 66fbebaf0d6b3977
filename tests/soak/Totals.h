// What the helper's statistics must be: a model of its updates.
#pragma once

#include <cstdint>
#include <string>

class Totals {
public:
    // What the thread of the statistics has done in a process.
    struct Updates {
        std::string process; // with the number of the boot
        std::uint32_t count = 0;
        std::uint64_t last = 0; // panel ms
    };

    // Takes over the updates since the last call; the driver of the counter told `counted` to each of them, 0 if it
    // could not. Returns what is wrong with their times, or "".
    std::string after(const Updates& updates, std::uint32_t counted, std::uint32_t bootTicks);
    // When the next update is due, in panel ms.
    std::uint64_t due() const;
    // The content of `EMMC.xml`.
    std::string text() const;

    // An update may have failed, or the process may have ended in one: what the file holds is not known.
    void forget() {
        known = false;
    }
    bool areKnown() const {
        return known;
    }
    void adopt(const std::string& file);

private:
    bool known = false;
    Updates former;
    std::uint32_t sessionCount = 0;
    std::uint32_t sessionDuration = 0; // s
    std::uint32_t totalCount = 0;
    std::uint32_t totalDuration = 0; // s
};
