// Folders and files of the host, for tests: among them a panel's.
#pragma once

#include "platform/panel/Panel.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

using Lines = std::vector<std::string>;

// An empty folder, which goes with all that is in it then.
class FreshFolder {
public:
    FreshFolder();
    ~FreshFolder();
    FreshFolder(const FreshFolder&) = delete;
    FreshFolder& operator=(const FreshFolder&) = delete;

    const std::filesystem::path path;
};

// Makes a panel there, which is off; its date is 2024-03-07 06:05:09 UTC.
panel::Panel newPanel(const std::filesystem::path& directory);

// A program of this build ("TarvexHelper", "Tarvex", "Actor").
std::filesystem::path programFile(std::string_view name);

// A file, whole; fails the test if it cannot be read.
std::string readText(const std::filesystem::path& file);
// Writes it with all missing folders above it.
void writeText(const std::filesystem::path& file, std::string_view content);

Lines linesOf(const std::string& text);
// A log without the time stamps: "INFO;Init of Helper\n".
std::string withoutStamps(const std::string& log);
