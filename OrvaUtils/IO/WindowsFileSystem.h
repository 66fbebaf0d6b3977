#pragma once

#include "OrvaUtils/IO/IFileSystem.h"

namespace OrvaUtils::IO {

// The platform's file system: backslashes, wide paths, one platform call an operation where there is one.
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
