// The lines that a text file gains.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tool {

class FileTail {
public:
    // The complete lines, without their ends, that the file has gained since the last call. A file that has been
    // truncated or replaced since counts from its beginning; one that is missing has none.
    std::vector<std::string> newLines(const std::filesystem::path& file);

private:
    std::uintmax_t offset = 0; // what has been read
    std::string beginning; // of the file, by which a new content is known
};

} // namespace tool
