#pragma once

#include <string>

// Makes the NAND flash writable when the first file on it is about to be changed, and read-only when its owner is done.
//
// The owner calls `unlockFor` before each change and `relock` after the last; the destructor does nothing. Failures are
// FlashNotWritableException and leave the guard as it was.
class FlashWriteGuard {
public:
    // Does nothing for a path elsewhere, nor when the flash is unlocked already.
    void unlockFor(const std::wstring& path);
    // Does nothing unless this guard has unlocked the flash.
    void relock();

private:
    bool unlocked = false;
};
