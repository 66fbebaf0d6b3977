// Reads what a RotatingLog has written.
#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace rotating_log {

// The numbers of each thread's lines, in all files of a folder. Each line must be whole and be there once.
inline std::map<std::string, std::set<std::size_t>> readLines(const std::filesystem::path& folder) {
    const std::regex whole("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8},[0-9]+;INFO;([0-9])/([0-9]+)");
    std::map<std::string, std::set<std::size_t>> numbers;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        for (std::string line; std::getline(file, line);) {
            std::smatch parts;
            EXPECT_TRUE(std::regex_match(line, parts, whole) && numbers[parts[1]].insert(std::stoul(parts[2])).second)
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
