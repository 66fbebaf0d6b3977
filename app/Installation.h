// The self-installation: copies the application and the helper into the installation directory \MMCMemory\Tarvex,
// deletes the file or folder that the helper was started from, and deletes leftovers at the next start.
//
// Call all functions on the main thread during start-up. A function that fails throws an OrvaUtils::Exception with the
// message given below; the exception ends the start-up. Leftovers are files and directories that could not be deleted
// because they were in use; they were renamed with the prefix "_rm_" (IFileSystem). The cleanup directories are the
// list in HelperSettings: the next start deletes the leftovers there.
#pragma once

#include <string>

// Returns the full path of the executable of this process. The path does not change if the file is renamed. Throws
// "Generic Exception" if GetModuleFileNameW fails. Without this exception the empty path would get into the list of
// cleanup directories, and every later start would fail.
const std::wstring& ownExecutable();

// Returns true if the volume `disk`, for example "Hard Disk" (without a backslash), holds the file Tarvex\Tarvex.exe.
bool diskHoldsApplication(const std::wstring& disk);
// Returns true if the volume "Hard Disk" or "Hard Disk2" holds the application.
bool anyDiskHoldsApplication();
// Returns the application's folder on "Hard Disk", or on "Hard Disk2" if only that volume holds the application. Throws
// "Tarvex not found in any external disk" if neither does.
std::wstring findApplicationSource();

// Installs the application and the helper. The caller must have checked that TarvexHelper.exe is not installed: an
// installed helper is never replaced.
//
// If Tarvex.exe is not installed and a volume holds the application (`findApplicationSource`), copies the application's
// whole folder from there, even if the helper was started from elsewhere. Files that exist in the installation
// directory stay, and files that cannot be copied are skipped without a report. In all other cases copies only the
// running helper with `copyHelperFile`, and throws its exceptions.
void installApplication();
// Copies a file over `destination`. Creates the directory of `destination` if only its last level is missing. Throws
// "Cannot find <source> to copy" if `source` does not exist. Throws "Cannot copy <source> to <destination>" if the copy
// fails, for example because the destination is read-only or in use.
void copyHelperFile(const std::wstring& source, const std::wstring& destination);

// Deletes the file or folder that the helper was started from. Adds the directory that may then hold leftovers to the
// cleanup directories.
//
// If the executable lies in the legacy folder \MMCMemory\ORVATarvex, or its path begins with "\Hard Disk" (as the path
// "\Hard Disk2\a.exe" does), deliberately deletes the executable's whole folder and adds the parent of that folder.
// Otherwise, for example on "\USB Disk", deletes only the executable and adds the executable's folder. Warning: if the
// executable lies in the root of "\Hard Disk", this deletes all files of the disk. It then adds an empty path, which
// makes every later start fail.
void registerStartLocationForCleanup();
// Deletes the leftovers in all cleanup directories, but not the directories themselves. Removes a directory from the
// list if it has no leftovers any more. A directory that still has leftovers stays in the list and is logged. Throws
// FileSystemException "Invalid directory name" if the list holds an empty path.
void cleanupRegisteredDirectories();
