#include "platform/tool/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace fs = std::filesystem;

void OutputFile::fail(int error) const {
    throw std::runtime_error("cannot write " + name.string() + ": " + std::strerror(error));
}

OutputFile::OutputFile(const fs::path& file) : name(file), target(file) {
    struct stat status {};
    const bool exists = stat(file.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        open = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
        if (open < 0)
            fail(errno);
        return;
    }
    if (exists)
        target = fs::canonical(file);
    else if (fs::is_symlink(fs::symlink_status(file)))
        fail(ENOENT); // a link to nothing
    orderly.emplace();
    std::string made = target.string() + ".XXXXXX";
    open = mkostemp(made.data(), O_CLOEXEC);
    if (open < 0)
        fail(errno);
    fresh = made;
    const mode_t mask = umask(0);
    umask(mask);
    if (exists && fchown(open, status.st_uid, status.st_gid) != 0)
        errno = 0; // another user's file: `cp` could write it, a new one belongs to this user
    fchmod(open, exists ? status.st_mode & 0777 : 0666 & ~mask);
}

OutputFile::~OutputFile() {
    if (open >= 0)
        close(open);
    if (!fresh.empty())
        unlink(fresh.c_str());
}

void OutputFile::write(std::string_view content) {
    while (!content.empty()) { // one write takes at most 2 GiB
        const ssize_t length = ::write(open, content.data(), content.size());
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            fail(length < 0 ? errno : ENOSPC);
        content.remove_prefix(static_cast<std::size_t>(length));
    }
}

void OutputFile::finish(const std::string& what, const std::string& hint) {
    OrderlyEnd::check();
    const int closed = close(open);
    open = -1;
    if (closed != 0 || (isRegular() && rename(fresh.c_str(), target.c_str()) != 0))
        fail(errno);
    if (isRegular())
        std::printf("Wrote %s to %s%s\n", what.c_str(), name.c_str(), hint.c_str());
}

} // namespace tool
