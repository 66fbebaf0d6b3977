// Reads the lines that are appended to a text file, as `tail -F` does.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace tool {

class FileTail {
public:
    // Returns the complete lines since the last call, without their line ends. If the file was truncated or replaced,
    // starts again at its beginning. A missing file has no lines. If more than `most` bytes are new, returns only the
    // lines within the last `most` bytes. Another `path` than before counts as a replacement if it is another file.
    std::vector<std::string> newLines(const std::filesystem::path& path, std::uintmax_t most = INTPTR_MAX);

    // Returns whether the last call found that the earlier lines are gone: the file was truncated, replaced or removed.
    bool startedAgain() const {
        return again;
    }

private:
    bool continues(const struct stat& now) const;
    std::string read(std::uintmax_t at, std::uintmax_t size) const;

    // The file stays open, so that no new file can get its inode number.
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file{nullptr, std::fclose};
    std::uintmax_t offset = 0; // number of bytes that were read or skipped so far
    std::string beginning; // first line (at most 64 bytes); another beginning means that the file was rewritten
    bool again = false;
};

} // namespace tool
