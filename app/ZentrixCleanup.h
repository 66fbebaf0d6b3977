// The cleanup of the Zentrix runtime: replaces the runtime's executable with its backup. Both files are on the
// write-protected NAND flash. Call both functions on the main thread during start-up.
#pragma once

#include "app/StartupContext.h"

// Returns true if a backup exists.
bool needsZentrixCleanup(const StartupContext& context);
// Lifts the write protection, deletes the executable, renames the backup to the executable's name, and restores the
// write protection. If the executable is running, it is renamed instead of deleted. If the move fails, the failure is
// logged and the backup stays for the next start. Throws FlashNotWritableException if the write protection cannot be
// switched. After a failure to restore the protection, the flash stays writable.
void cleanupZentrix(const StartupContext& context);
