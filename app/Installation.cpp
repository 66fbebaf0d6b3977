#include "app/Installation.h"

#include "OrvaUtils/Exception.h"
#include "OrvaUtils/IO/IFileSystem.h"
#include "OrvaUtils/Text.h"
#include "app/HelperSettings.h"
#include "app/Paths.h"
#include "app/log/Logger.h"

#include <utility>
#include <vector>

using OrvaUtils::Exception;
using OrvaUtils::IO::getFileSystem;
using OrvaUtils::IO::IFileSystem;

namespace {

// The search for the application uses the names without a leading separator, the test of a path uses them with it.
constexpr wchar_t FIRST_DISK[] = L"Hard Disk";
constexpr wchar_t SECOND_DISK[] = L"Hard Disk2";
constexpr wchar_t FIRST_DISK_ROOT[] = L"\\Hard Disk";
constexpr wchar_t SECOND_DISK_ROOT[] = L"\\Hard Disk2";
constexpr wchar_t LEGACY_DIRECTORY[] = L"\\MMCMemory\\ORVATarvex";

std::wstring applicationFolder(const std::wstring& disk) {
    return getFileSystem().combinePath(disk, Paths::APPLICATION_NAME);
}

// The second comparison never decides, because "\Hard Disk2" begins with "\Hard Disk".
bool isOnExternalDisk(const std::wstring& directory) {
    IFileSystem& files = getFileSystem();
    return files.isSubPath(FIRST_DISK_ROOT, directory) || files.isSubPath(SECOND_DISK_ROOT, directory);
}

// The pattern is wider than the prefix of a leftover, which is "_rm_".
bool hasLeftovers(const std::wstring& directory) {
    return !directory.empty() && !getFileSystem().createDirectoryIterator(directory, L"_rm*")->atEnd();
}

} // namespace

const std::wstring& ownExecutable() {
    // The path stays the same in the whole process, even after the file was renamed.
    static const std::wstring path = Paths::runningExecutable();
    if (path.empty()) {
        throw Exception();
    }
    return path;
}

bool diskHoldsApplication(const std::wstring& disk) {
    IFileSystem& files = getFileSystem();
    return files.isFile(files.combinePath(applicationFolder(disk), Paths::APPLICATION_FILE_NAME));
}

bool anyDiskHoldsApplication() {
    return diskHoldsApplication(FIRST_DISK) || diskHoldsApplication(SECOND_DISK);
}

std::wstring findApplicationSource() {
    for (const wchar_t* disk : {FIRST_DISK, SECOND_DISK}) {
        if (diskHoldsApplication(disk)) {
            return applicationFolder(disk);
        }
    }
    throw Exception(L"Tarvex not found in any external disk");
}

void installApplication() {
    IFileSystem& files = getFileSystem();
    if (!files.isFile(Paths::APPLICATION) && anyDiskHoldsApplication()) {
        // Existing files stay: the disk adds only what is missing.
        files.copyDirectory(Paths::INSTALLATION_DIRECTORY, findApplicationSource(), false, L"*");
    } else {
        copyHelperFile(ownExecutable(), Paths::HELPER);
    }
}

void copyHelperFile(const std::wstring& source, const std::wstring& destination) {
    IFileSystem& files = getFileSystem();
    if (!files.isFile(source)) {
        throw Exception(L"Cannot find " + source + L" to copy");
    }
    const std::wstring directory = files.getDirectoryPart(destination);
    if (!files.isDirectory(directory)) {
        // The result is not examined: without a directory the copy fails and is reported.
        files.createDirectory(directory);
    }
    // The second look at the destination catches a copy that reported success without a file.
    if (!files.copyFile(source, destination, true) || !files.isFile(destination)) {
        throw Exception(L"Cannot copy " + source + L" to " + destination);
    }
}

void registerStartLocationForCleanup() {
    IFileSystem& files = getFileSystem();
    const std::wstring directory = files.getDirectoryPart(ownExecutable());
    std::wstring leftoversIn = directory;
    if (OrvaUtils::equalIgnoringCase(directory, LEGACY_DIRECTORY) || isOnExternalDisk(directory)) {
        // The running executable is in use: the folder and the executable are renamed, so the leftovers lie in the
        // parent.
        files.deleteDirectoryOrRename(directory);
        leftoversIn = files.getDirectoryPart(directory);
    } else {
        files.deleteOrRenameFile(ownExecutable());
    }
    HelperSettings::instance().cleanupDirectories.push_back(leftoversIn);
}

void cleanupRegisteredDirectories() {
    std::vector<std::wstring>& directories = HelperSettings::instance().cleanupDirectories;
    std::vector<std::wstring> kept;
    for (const std::wstring& directory : directories) {
        // This throws for an empty path. The list in the document then stays as it is.
        getFileSystem().cleanupDirectory(directory);
        if (hasLeftovers(directory)) {
            kept.push_back(directory);
        }
    }
    directories = std::move(kept);
    for (const std::wstring& directory : directories) {
        Logger::instance().writeParts(LogLevel::Info, {L"Path ", directory, L" not cleaned up"});
    }
}
