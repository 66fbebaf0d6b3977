// Brings the application and the helper to the installation directory, and removes what that leaves behind.
//
// What a step cannot do ends the start-up with an OrvaUtils::Exception.
#pragma once

#include <string>

// The full path of the file that this helper was started from; the platform is asked once. Throws when it does not
// tell: taken for a place of its own, an empty path would be noted for cleanup, and end every later start.
const std::wstring& ownExecutable();

// Whether a disk ("Hard Disk") carries the application's folder.
bool diskHoldsApplication(const std::wstring& disk);
bool anyDiskHoldsApplication();
// The application's folder on the first disk that carries it. Throws "Tarvex not found in any external disk".
std::wstring findApplicationSource();

// Copies the application's whole folder from a disk, keeping files that are there; without such a disk, or when the
// application is there already, only the running helper.
void installApplication();
// Replaces `destination`, whose directory is made if its parent exists. Throws "Cannot find ... to copy" and
// "Cannot copy ... to ...".
void copyHelperFile(const std::wstring& source, const std::wstring& destination);

// Removes the place that the helper runs from, or renames it away as far as it is in use, and notes in the settings
// where leftovers remain. A folder on an external disk goes as a whole, deliberately.
void registerStartLocationForCleanup();
// Removes the leftovers in the directories that the settings name; those where some remain stay in the settings. The
// directories themselves are not removed.
void cleanupRegisteredDirectories();
