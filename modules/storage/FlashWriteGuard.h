#pragma once

#include <string>

// A guard of the NAND flash's write protection: it lifts the protection when the first file on the flash is about to
// change, and restores it afterwards.
//
// The owner calls `unlockFor` before each change and `relock` after the last change; the destructor does nothing. Both
// throw FlashNotWritableException and leave the guard unchanged if the protection cannot be switched. Only one thread
// may use the object.
class FlashWriteGuard {
public:
    // Lifts the protection. Does nothing if the path lies elsewhere or this guard has lifted the protection already.
    void unlockFor(const std::wstring& path);
    // Restores the protection. Does nothing unless this guard has lifted it.
    void relock();

private:
    bool unlocked = false;
};
