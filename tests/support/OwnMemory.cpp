#include "tests/support/OwnMemory.h"

#include <cstdio>
#include <fstream>
#include <string>

std::size_t ownMemory(std::int32_t hostPid) {
    std::ifstream maps("/proc/" + std::to_string(hostPid) + "/smaps");
    std::size_t sum = 0;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t emulated = 0;
    for (std::string line; std::getline(maps, line);) {
        std::size_t kilobytes = 0;
        if (std::sscanf(line.c_str(), "Anonymous: %zu", &kilobytes) == 1)
            sum += emulated == 0 || begin - emulated < 0xFFFFFFFF ? kilobytes : 0;
        else if (std::sscanf(line.c_str(), "%zx-%zx", &begin, &end) == 2 && emulated == 0 && line.ends_with("/loader"))
            emulated = begin;
    }
    return sum;
}
