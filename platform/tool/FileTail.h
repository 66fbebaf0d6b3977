// Reads the lines that are appended to a text file, as `tail -f` does.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tool {

class FileTail {
public:
    // Returns the complete lines since the last call, without their line ends. If the file was truncated or replaced,
    // starts again at its beginning. A missing file has no lines.
    std::vector<std::string> newLines(const std::filesystem::path& file);

private:
    std::uintmax_t offset = 0; // number of bytes read so far
    std::string beginning; // first line (at most 64 bytes); another beginning means another file
};

} // namespace tool
