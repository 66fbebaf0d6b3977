// The write protection of the panel's internal flash memory, the volume \NANDFlash. It is a state of the volume, not of
// the process: what was made writable stays so for everybody until it is switched back. On the main thread, during
// start-up.
#pragma once

#include <string>

// Whether the path begins with "\NANDFlash", its case aside. Text only: \NANDFlashX counts.
bool isOnNandFlash(const std::wstring& path);

// Throw FlashNotWritableException when the volume's driver is missing or refuses.
void makeFlashWritable();
void makeFlashReadOnly();
