#include "platform/tool/FileTail.h"

#include <algorithm>
#include <unistd.h>

namespace tool {

std::vector<std::string> FileTail::newLines(const std::filesystem::path& path, std::uintmax_t most) {
    constexpr std::uintmax_t known = 64;
    struct stat now {};
    // A named pipe is not opened either, since reading it could block.
    const bool there = stat(path.c_str(), &now) == 0 && S_ISREG(now.st_mode);
    again = file && !(there && continues(now));
    if (again) {
        file.reset();
        offset = 0;
        beginning.clear();
    }
    if (!file && there)
        file.reset(std::fopen(path.c_str(), "re"));
    if (!file || fstat(fileno(file.get()), &now) != 0)
        return {};
    const auto size = std::max(offset, static_cast<std::uintmax_t>(now.st_size)); // it may have shrunk meanwhile
    const bool skips = size - offset > most;
    const std::uintmax_t at = skips ? size - most : offset;
    const std::string text = read(at, size - at);

    std::vector<std::string> lines;
    std::size_t start = skips ? text.find('\n') + 1 : 0; // the rest of a line is no line
    if (skips && start == 0)
        return {}; // not yet the end of that line
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    // The first line identifies the content, so that a rewritten file is noticed even if it is longer than before.
    if (offset == 0)
        beginning = read(0, std::min(at + start, known));
    offset = at + start;
    return lines;
}

bool FileTail::continues(const struct stat& now) const {
    struct stat held {};
    return fstat(fileno(file.get()), &held) == 0 && held.st_ino == now.st_ino && held.st_dev == now.st_dev &&
           static_cast<std::uintmax_t>(held.st_size) >= offset && read(0, beginning.size()) == beginning;
}

std::string FileTail::read(std::uintmax_t at, std::uintmax_t size) const {
    std::string text(size, '\0');
    const ssize_t got = pread(fileno(file.get()), text.data(), text.size(), static_cast<off_t>(at));
    text.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return text;
}

} // namespace tool
