#pragma once

#include "OrvaUtils/IO/DirectoryEntry.h"

#include <memory>
#include <string>

namespace OrvaUtils::IO {

// Names that begin so are leftovers of files and directories that could not be deleted while they were in use.
inline constexpr wchar_t RENAME_AWAY_PREFIX[] = L"_rm_";

// Files, directories and paths.
//
// Paths are absolute, with a volume in front and no drive letter: \NANDFlash\ZentrixHMI. Operations on one file answer
// false when the platform refuses and leave things as the platform left them; operations on trees throw
// FileSystemException for an empty path and otherwise do as much as they can, in silence. There is no state and no
// lock: any thread may call, and threads that work on the same directories order their calls themselves.
//
// The composite operations stand here, on top of the others, so they serve every implementation.
class IFileSystem {
public:
    virtual ~IFileSystem() = default;

    // Something that exists and is no directory.
    virtual bool isFile(const std::wstring& path) = 0;
    virtual bool isDirectory(const std::wstring& path) = 0;

    virtual wchar_t getSeparator() = 0;
    // Without trailing separators, and each run of them made one.
    virtual std::wstring normalizePath(const std::wstring& path) = 0;
    // `first`, a separator unless `first` is empty or ends with one, and `second` without the separators in front.
    virtual std::wstring combinePath(const std::wstring& first, const std::wstring& second) = 0;
    // The text before the last separator; empty if there is none.
    virtual std::wstring getDirectoryPart(const std::wstring& path) = 0;
    // The text after the last separator, without `suffix` if it ends with exactly that.
    virtual std::wstring getFileName(const std::wstring& path, const std::wstring& suffix) = 0;
    // Every "/" becomes the separator.
    virtual std::wstring toNativeSeparators(const std::wstring& path) = 0;

    // One level.
    virtual bool createDirectory(const std::wstring& path) = 0;
    // All levels. True only if the last one that was missing has been created, hence false for a path that exists.
    virtual bool createDirectories(const std::wstring& path) = 0;
    // Whether `path` begins with `parent`, case and repeated separators aside. Text only: \A\BC lies under \A\B.
    virtual bool isSubPath(const std::wstring& parent, const std::wstring& path) = 0;
    // The entries of a directory whose names match the pattern ("*", "?"); none for an empty pattern and for a
    // directory that cannot be listed.
    virtual std::unique_ptr<DirectoryIterator> createDirectoryIterator(const std::wstring& directory,
                                                                       const std::wstring& pattern) = 0;

    virtual bool copyFile(const std::wstring& source, const std::wstring& destination, bool overwrite) = 0;
    // Like copyFile, but neither a read-only nor a busy destination stops it: that one is deleted or renamed first.
    virtual bool copyFileReplacing(const std::wstring& source, const std::wstring& destination, bool overwrite) = 0;
    // Never replaces.
    virtual bool moveFile(const std::wstring& source, const std::wstring& destination) = 0;
    // Deletes the destination first or renames it away.
    virtual bool moveFileReplacing(const std::wstring& source, const std::wstring& destination);
    // Read-only files too.
    virtual bool deleteFile(const std::wstring& path) = 0;
    // Deletes a file; one that cannot be deleted is renamed away, unless its name says that it already was. True
    // always. `newName` becomes the path that it should be renamed to, also if the platform refused or there is no such
    // file, and stays as it is when there was no need.
    virtual bool deleteOrRenameFile(const std::wstring& path);
    virtual bool deleteOrRenameFile(const std::wstring& path, std::wstring& newName);

    // Copies a tree. The destination comes first, deliberately the reverse of the file operations. Existing files stay
    // unless `overwrite`. `pattern` selects files and directories at every depth. The destination's parent must exist;
    // what cannot be copied stays missing, without a word.
    virtual void copyDirectory(const std::wstring& destination, const std::wstring& source, bool overwrite,
                               const std::wstring& pattern);
    // An empty one.
    virtual bool removeDirectory(const std::wstring& path) = 0;
    // Deletes a tree. What is in use is renamed away, and so is every directory that therefore cannot go. True always.
    // `newName` becomes the path that the tree was renamed to, else `path`.
    virtual bool deleteDirectoryOrRename(const std::wstring& path);
    virtual bool deleteDirectoryOrRename(const std::wstring& path, std::wstring& newName);
    // The same for the direct entries that match `pattern` and do not match `excludedPattern`; the directory stays.
    virtual void deleteDirectoryContents(const std::wstring& path, const std::wstring& pattern,
                                         const std::wstring& excludedPattern);
    // Deletes the direct entries that were once renamed away, as far as they can be deleted by now.
    virtual void cleanupDirectory(const std::wstring& path);

    // A shortcut file that runs `target` (quoted here if it is not yet) with `arguments`. True whatever happens.
    virtual bool createShortcut(const std::wstring& shortcutPath, const std::wstring& target,
                                const std::wstring& arguments) = 0;

private:
    std::wstring renameAway(const std::wstring& path);
};

// The one file system of the process, made at the first call and deleted at the process's exit.
IFileSystem& getFileSystem();

} // namespace OrvaUtils::IO
