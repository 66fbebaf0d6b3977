// The self-installation: copies the application and the helper into the installation directory \MMCMemory\Tarvex,
// deletes the place that the helper was started from, and deletes leftovers at the next start.
//
// Call all functions on the main thread during start-up. A step that cannot be done throws an OrvaUtils::Exception with
// the message given below; the exception ends the start-up. Leftovers are files that were in use: they carry the prefix
// "_rm_" (IFileSystem).
#pragma once

#include <string>

// Returns the full path that this helper was started by. The platform is asked once. Throws "Generic Exception" if the
// platform does not know the path: an empty path in the list of cleanup directories would make every later start fail.
const std::wstring& ownExecutable();

// Tells whether a disk, such as "Hard Disk", holds the file Tarvex\Tarvex.exe.
bool diskHoldsApplication(const std::wstring& disk);
// Tells whether "Hard Disk" or "Hard Disk2" holds the application.
bool anyDiskHoldsApplication();
// Returns the application's folder on the first disk that holds the application: "Hard Disk", then "Hard Disk2". Throws
// "Tarvex not found in any external disk".
std::wstring findApplicationSource();

// Installs what is missing. If Tarvex.exe is not installed and a disk holds the application, copies the application's
// whole folder from that disk; files that are installed already stay. Otherwise copies only the running helper. The
// place that the helper was started from does not matter for this choice. Throws the exceptions of `copyHelperFile`; a
// folder copy skips files that it cannot copy.
void installApplication();
// Copies the helper and replaces `destination`, unless the destination is read-only or in use. Creates the
// destination's directory if only the last level is missing. Throws "Cannot find <source> to copy" and "Cannot copy
// <source> to <destination>".
void copyHelperFile(const std::wstring& source, const std::wstring& destination);

// Deletes the place that the helper was started from, and adds the directory of its leftovers to the settings.
//
// On an external disk, and in the legacy folder \MMCMemory\ORVATarvex, this deliberately deletes the whole folder of
// the executable; its parent directory is added. Anywhere else it deletes the executable only, and adds its directory.
// In the root of a disk the whole folder is the whole disk, and the added path is empty.
void registerStartLocationForCleanup();
// Deletes the leftovers in the directories that the settings list. A directory that still has leftovers stays in the
// list and is logged; the others are removed from the list. The directories themselves stay on the panel. Throws
// FileSystemException "Invalid directory name" for an empty path in the list.
void cleanupRegisteredDirectories();
