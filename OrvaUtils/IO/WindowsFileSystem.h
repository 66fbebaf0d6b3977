#pragma once

#include "OrvaUtils/IO/IFileSystem.h"

namespace OrvaUtils::IO {

// The file system of the platform. IFileSystem documents the operations.
//
// The separator is the backslash. Where the platform has a function for an operation, the operation is one call of this
// function. Tests of paths read the attributes of the file. Errors are not examined: GetLastError is never called.
// Program code uses `getFileSystem`; an object of its own is only necessary where a thread may outlive the shared
// object.
class WindowsFileSystem : public IFileSystem {
public:
    bool isFile(const std::wstring& path) override;
    bool isDirectory(const std::wstring& path) override;
    wchar_t getSeparator() override;
    std::wstring normalizePath(const std::wstring& path) override;
    std::wstring combinePath(const std::wstring& first, const std::wstring& second) override;
    std::wstring getDirectoryPart(const std::wstring& path) override;
    std::wstring getFileName(const std::wstring& path, const std::wstring& suffix) override;
    std::wstring toNativeSeparators(const std::wstring& path) override;
    bool createDirectory(const std::wstring& path) override;
    bool createDirectories(const std::wstring& path) override;
    bool isSubPath(const std::wstring& parent, const std::wstring& path) override;
    std::unique_ptr<DirectoryIterator> createDirectoryIterator(const std::wstring& directory,
                                                               const std::wstring& pattern) override;
    bool copyFile(const std::wstring& source, const std::wstring& destination, bool overwrite) override;
    bool copyFileReplacing(const std::wstring& source, const std::wstring& destination, bool overwrite) override;
    bool moveFile(const std::wstring& source, const std::wstring& destination) override;
    bool deleteFile(const std::wstring& path) override;
    bool removeDirectory(const std::wstring& path) override;
    bool createShortcut(const std::wstring& shortcutPath, const std::wstring& target,
                        const std::wstring& arguments) override;
};

} // namespace OrvaUtils::IO
