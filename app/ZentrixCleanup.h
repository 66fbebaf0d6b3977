// Puts a backup of the Zentrix runtime in place of its executable, on the write-protected NAND flash.
#pragma once

#include "app/StartupContext.h"

// Whether there is a backup.
bool needsZentrixCleanup(const StartupContext& context);
// An executable that runs is renamed away. A backup that cannot be moved stays, for the next start, and is logged. When
// the flash's write protection cannot be switched this throws FlashNotWritableException; if that was to be switched on
// again, the flash stays writable.
void cleanupZentrix(const StartupContext& context);
