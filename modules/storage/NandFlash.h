// The write protection of the volume \NANDFlash, the panel's internal flash memory. The protection is a state of the
// volume and not of the process: a volume that was made writable stays writable for all programs until it is switched
// back. Call the functions on the main thread during start-up.
#pragma once

#include <string>

// Returns true if the text of a path begins with "\NANDFlash" (case-insensitive). The result is therefore also true for
// \NANDFlashX.
bool isOnNandFlash(const std::wstring& path);

// Lifts the write protection. Throws FlashNotWritableException if the volume's driver is missing or the request fails.
void makeFlashWritable();
// Restores the write protection. Throws FlashNotWritableException in the same cases.
void makeFlashReadOnly();
