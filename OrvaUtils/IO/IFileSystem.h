#pragma once

#include "OrvaUtils/IO/DirectoryEntry.h"

#include <memory>
#include <string>

namespace OrvaUtils::IO {

// The prefix of leftovers. A file or directory that is in use cannot be deleted, so it is renamed to a name with this
// prefix. `cleanupDirectory` deletes leftovers later.
inline constexpr wchar_t RENAME_AWAY_PREFIX[] = L"_rm_";

// The file system: tests, copies, moves, deletes and lists files and directories, and computes paths.
//
// Paths are absolute and begin with a volume, for example \NANDFlash\ZentrixHMI. There are no drive letters. Unless its
// comment says otherwise, an operation on one file returns false if the platform call fails; it does not undo partial
// changes. An operation on a directory tree throws FileSystemException for an empty path. It skips entries that it
// cannot handle, and does not report them.
//
// The object has no state and no lock. Any thread may call any operation. Threads that work on the same directories
// must synchronise their calls.
//
// Operations that only combine other operations are implemented in this class; a derived class inherits them.
class IFileSystem {
public:
    virtual ~IFileSystem() = default;

    // Returns true if the path exists and is not a directory.
    virtual bool isFile(const std::wstring& path) = 0;
    // Returns true if the path is an existing directory.
    virtual bool isDirectory(const std::wstring& path) = 0;

    // Returns the separator of paths, a backslash.
    virtual wchar_t getSeparator() = 0;
    // Removes separators at the end and reduces each run of separators to one separator.
    virtual std::wstring normalizePath(const std::wstring& path) = 0;
    // Joins two paths with one separator: \A and \\B give \A\B. An empty `first` gives `second` without leading
    // separators.
    virtual std::wstring combinePath(const std::wstring& first, const std::wstring& second) = 0;
    // Returns the text before the last separator, or an empty text if there is no separator.
    virtual std::wstring getDirectoryPart(const std::wstring& path) = 0;
    // Returns the text after the last separator, or the whole path if there is no separator. If the text ends with
    // `suffix`, the suffix is removed; the comparison is case-sensitive.
    virtual std::wstring getFileName(const std::wstring& path, const std::wstring& suffix) = 0;
    // Replaces every "/" with the separator.
    virtual std::wstring toNativeSeparators(const std::wstring& path) = 0;

    // Creates one directory. Returns false if its parent directory is missing, or if the path exists already.
    virtual bool createDirectory(const std::wstring& path) = 0;
    // Creates all missing directories of the path. Returns true only if the last missing directory was created. The
    // result is deliberately false if the whole path exists already.
    virtual bool createDirectories(const std::wstring& path) = 0;
    // Returns true if the text of `path` begins with the text of `parent`. The comparison is case-insensitive and
    // ignores repeated separators. It does not look for a separator after `parent`: \A\BC counts as a subpath of \A\B.
    // Every path is a subpath of the empty path.
    virtual bool isSubPath(const std::wstring& parent, const std::wstring& path) = 0;
    // Lists the entries of a directory whose names match the pattern ("*" and "?" are wildcards). The list is empty if
    // the pattern is empty or the directory cannot be listed.
    virtual std::unique_ptr<DirectoryIterator> createDirectoryIterator(const std::wstring& directory,
                                                                       const std::wstring& pattern) = 0;

    // Copies a file. Returns false if the destination exists and `overwrite` is false. A read-only or busy destination
    // makes the copy fail.
    virtual bool copyFile(const std::wstring& source, const std::wstring& destination, bool overwrite) = 0;
    // Copies a file. If the destination exists and `overwrite` is false, changes nothing and returns false. If the
    // destination exists and `overwrite` is true, first deletes the destination or renames it with the prefix "_rm_". A
    // read-only or busy destination therefore does not make the copy fail.
    virtual bool copyFileReplacing(const std::wstring& source, const std::wstring& destination, bool overwrite) = 0;
    // Moves or renames a file or directory. Returns false if the destination exists.
    virtual bool moveFile(const std::wstring& source, const std::wstring& destination) = 0;
    // Moves a file. If the destination is an existing file, first deletes it or renames it with the prefix "_rm_".
    virtual bool moveFileReplacing(const std::wstring& source, const std::wstring& destination);
    // Deletes a file, even a read-only file. Returns false if the file is missing or in use.
    virtual bool deleteFile(const std::wstring& path) = 0;
    // Deletes a file. If that fails, renames the file with the prefix "_rm_"; a file that already has the prefix keeps
    // its name. Always returns true.
    virtual bool deleteOrRenameFile(const std::wstring& path);
    // Deletes or renames a file like the overload above. Sets `newName` to the new path if it tries to rename the file.
    // The rename may have failed, and the file may never have existed. If no rename is tried, `newName` stays
    // unchanged.
    virtual bool deleteOrRenameFile(const std::wstring& path, std::wstring& newName);

    // Copies a directory tree. The destination deliberately comes first, unlike in the file operations. The parent of
    // the destination must exist. Existing files stay unless `overwrite` is true. `pattern` selects files and
    // directories at every depth. Files that cannot be copied are skipped without a report. Throws FileSystemException
    // "Invalid source directory" or "Invalid destination directory" for an empty path.
    virtual void copyDirectory(const std::wstring& destination, const std::wstring& source, bool overwrite,
                               const std::wstring& pattern);
    // Deletes an empty directory. Returns false if the directory is missing, in use or not empty.
    virtual bool removeDirectory(const std::wstring& path) = 0;
    // Deletes a directory tree. Entries that are in use get the prefix "_rm_", and so do the directories that still
    // hold such entries. Always returns true. Throws FileSystemException "Invalid directory name" for an empty path.
    virtual bool deleteDirectoryOrRename(const std::wstring& path);
    // Deletes or renames a directory like the overload above. Sets `newName` to the new path if it tries to rename the
    // directory itself, otherwise to `path`. The rename may have failed.
    virtual bool deleteDirectoryOrRename(const std::wstring& path, std::wstring& newName);
    // Deletes those entries of a directory whose names match `pattern` but not `excludedPattern`: files, and
    // subdirectories with all their contents. Entries that are in use get the prefix "_rm_". The directory itself
    // stays. An empty `excludedPattern` excludes nothing. Throws FileSystemException "Invalid directory name" for an
    // empty path.
    virtual void deleteDirectoryContents(const std::wstring& path, const std::wstring& pattern,
                                         const std::wstring& excludedPattern);
    // Deletes the leftovers in a directory, but not those in its subdirectories. A leftover that is still in use stays.
    // Throws FileSystemException "Invalid directory name" for an empty path.
    virtual void cleanupDirectory(const std::wstring& path);

    // Creates a shortcut file that runs `target` with `arguments`. Puts `target` in double quotes, unless `target`
    // already begins with a double quote. Always returns true, even if the platform call fails.
    virtual bool createShortcut(const std::wstring& shortcutPath, const std::wstring& target,
                                const std::wstring& arguments) = 0;

private:
    std::wstring renameAway(const std::wstring& path);
};

// Returns the one file system object of the process. The first call creates it; process exit deletes it.
IFileSystem& getFileSystem();

} // namespace OrvaUtils::IO
