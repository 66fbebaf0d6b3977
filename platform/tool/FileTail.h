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
    // starts again at its beginning. A missing file has no lines. If more than `most` bytes are new, returns only the
    // lines within the last `most` bytes.
    std::vector<std::string> newLines(const std::filesystem::path& file, std::uintmax_t most = INTPTR_MAX);

private:
    std::uintmax_t offset = 0; // number of bytes that were read or skipped so far
    std::string beginning; // first line (at most 64 bytes); another beginning means another file
};

} // namespace tool
