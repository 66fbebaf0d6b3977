#include "modules/storage/FlashWriteGuard.h"

#include "modules/storage/NandFlash.h"

void FlashWriteGuard::unlockFor(const std::wstring& path) {
    if (!unlocked && isOnNandFlash(path)) {
        makeFlashWritable();
        // An exception skips this line: the guard then does not restore a protection that it did not lift.
        unlocked = true;
    }
}

void FlashWriteGuard::relock() {
    if (unlocked) {
        makeFlashReadOnly();
        unlocked = false;
    }
}
