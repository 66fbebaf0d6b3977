#include "modules/storage/FlashWriteGuard.h"

#include "modules/storage/NandFlash.h"

void FlashWriteGuard::unlockFor(const std::wstring& path) {
    if (!unlocked && isOnNandFlash(path)) {
        makeFlashWritable();
        unlocked = true;
    }
}

void FlashWriteGuard::relock() {
    if (unlocked) {
        makeFlashReadOnly();
        unlocked = false;
    }
}
