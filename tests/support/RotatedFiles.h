// Reads what a RotatingLog has written.
#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

namespace rotating_log {

// The numbers of each thread's lines, in all files of a folder. Each line must be whole and be there once.
inline std::map<unsigned, std::set<unsigned>> readLines(const std::filesystem::path& folder) {
    std::map<unsigned, std::set<unsigned>> numbers;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        for (std::string line; std::getline(file, line);) {
            unsigned date[7];
            unsigned thread = 0;
            unsigned number = 0;
            int length = 0;
            std::sscanf(line.c_str(), "%4u-%2u-%2u %2u:%2u:%2u,%u;INFO;%1u/%u%n", date, date + 1, date + 2, date + 3,
                        date + 4, date + 5, date + 6, &thread, &number, &length);
            EXPECT_TRUE(static_cast<std::size_t>(length) == line.size() && numbers[thread].insert(number).second)
                << line;
        }
    }
    return numbers;
}

// Whether no thread lost a line.
inline void expectAllLines(const std::filesystem::path& folder) {
    const auto numbers = readLines(folder);
    EXPECT_GT(numbers.size(), 1U);
    for (const auto& [thread, lines] : numbers) {
        EXPECT_EQ(*lines.rbegin() + 1, lines.size()) << thread;
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "log300.txt"));
}

} // namespace rotating_log
