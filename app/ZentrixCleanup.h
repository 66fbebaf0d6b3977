// The cleanup of the Zentrix runtime: moves a backup of its executable into the place of the executable, on the
// write-protected NAND flash. Call both functions on the main thread during start-up.
#pragma once

#include "app/StartupContext.h"

// Tells whether there is a backup.
bool needsZentrixCleanup(const StartupContext& context);
// Lifts the write protection, deletes the executable (a running executable is renamed), moves the backup into its place
// and restores the write protection. If the move fails, the failure is logged and the backup stays for the next start.
// Throws FlashNotWritableException if the write protection cannot be switched. After a failure to restore the
// protection, the flash stays writable.
void cleanupZentrix(const StartupContext& context);
