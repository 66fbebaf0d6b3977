// A file of this machine that a command writes for a person. Links are followed, and a pipe or a device that exists
// takes the content.
//
// A regular file is replaced as a whole and keeps its mode: the content goes to a new file beside it, which is renamed
// at the end. So the folder must be writable. Without `finish`, and if a signal comes before it, the former file stays,
// and nothing else.
//
// All functions throw std::runtime_error with the file's name in the text.
#pragma once

#include "platform/tool/Interruption.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

class OutputFile {
public:
    // Opens the file. Waits while a named pipe has no reader.
    explicit OutputFile(const std::filesystem::path& file);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view content);
    // Replaces the file. Then prints "Wrote WHAT to FILE" and the hint, unless a program reads the content.
    void finish(const std::string& what, const std::string& hint = {});

    int descriptor() const {
        return open;
    }

private:
    [[noreturn]] void fail(int error) const;
    bool isRegular() const { // otherwise a program may read the content, perhaps through standard output
        return !fresh.empty();
    }

    std::optional<OrderlyEnd> orderly; // first: it may end the command after the destructor
    std::filesystem::path name;
    std::filesystem::path target; // the regular file behind all links
    std::string fresh; // the file that will replace it; empty for pipes and devices
    int open = -1;
};

} // namespace tool
