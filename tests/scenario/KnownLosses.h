// What one failing call of a start-up costs for good: no later start can know what was lost. docs/behaviours.md has the
// same list in words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class Start { fromDisk, inPlace };

struct KnownLoss {
    Start start;
    std::uint32_t process; // how many-th helper
    std::string_view function;
    std::string_view arguments; // what the call's arguments begin with
    std::string_view
        loss; // of the end state: - missing, + left over, ~ other content; flashWritable until the next boot
    std::uint32_t occurrence = 0; // which of the calls with these arguments; 0: each
};

inline constexpr const char* flashWritable = "the flash is writable";
// As an occurrence: the last one. The panel's C run time looks at a file's position once more, and can do without.
inline constexpr std::uint32_t last = 0xFFFFFFFF;

// The disk's folder is deleted whatever was copied; the leftovers on the disk are registered for cleanup in the
// settings alone, by a helper that starts once.
#define ON_DISK "+Hard Disk\\_rm_Tarvex\\ +Hard Disk\\_rm_Tarvex\\_rm_TarvexHelper.exe"
#define SETTINGS "~MMCMemory\\Tarvex\\config.xml"
#define DEEP "-MMCMemory\\Tarvex\\data\\deep\\ -MMCMemory\\Tarvex\\data\\deep\\table.bin"
#define TABLE "-MMCMemory\\Tarvex\\data\\deep\\table.bin"
#define DATA "-MMCMemory\\Tarvex\\data\\ " DEEP
#define README "-MMCMemory\\Tarvex\\readme.txt"
#define APPLICATION "-MMCMemory\\Tarvex\\Tarvex.exe"
#define NEW_FILE "-HKEY_CLASSES_ROOT\\.osr\\ShellNew|NullFile"
#define ASSOCIATION                                                                                                    \
    NEW_FILE " -HKEY_CLASSES_ROOT\\.osr| -HKEY_CLASSES_ROOT\\osrfile\\DefaultIcon| "                                   \
             "-HKEY_CLASSES_ROOT\\osrfile\\shell\\open\\command| -HKEY_CLASSES_ROOT\\osrfile|"
#define AUTORUN "-HKEY_LOCAL_MACHINE\\init|Depend61 -HKEY_LOCAL_MACHINE\\init|Launch61"
#define UNREGISTERED ASSOCIATION " " AUTORUN
#define SCREEN_SAVER "-MMCMemory\\Tarvex\\ScreenSaverConfig.xml"
#define BUZZER "-MMCMemory\\Tarvex\\TouchBuzzerConfig.xml"
#define FREQUENCY "~MMCMemory\\Tarvex\\TouchBuzzerConfig.xml"
#define HELPER "-MMCMemory\\Tarvex\\TarvexHelper.exe"

inline constexpr KnownLoss knownLosses[] = {
    // Copying: what cannot be listed, made or copied is gone with the disk's folder.
    {Start::fromDisk, 1, "GetFileAttributesW", R"("Hard Disk\Tarvex\Tarvex.exe")",
     SCREEN_SAVER " " APPLICATION " " BUZZER " " DATA " " README, 1},
    {Start::fromDisk, 1, "FindFirstFileW", R"("Hard Disk\Tarvex\*")",
     UNREGISTERED " " SCREEN_SAVER " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " DATA " " README " " ON_DISK},
    {Start::fromDisk, 1, "FindFirstFileW", R"("Hard Disk\Tarvex\data\*")", DEEP},
    {Start::fromDisk, 1, "FindFirstFileW", R"("Hard Disk\Tarvex\data\deep\*")", TABLE},
    {Start::fromDisk, 1, "FindNextFileW", R"("Hard Disk\Tarvex\*", "readme.txt")",
     UNREGISTERED " " SCREEN_SAVER " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " README " " ON_DISK},
    {Start::fromDisk, 1, "FindNextFileW", R"("Hard Disk\Tarvex\*", "ScreenSaverConfig.xml")",
     UNREGISTERED " " SCREEN_SAVER " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " ON_DISK},
    {Start::fromDisk, 1, "FindNextFileW", R"("Hard Disk\Tarvex\*", "Tarvex.exe")",
     UNREGISTERED " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " ON_DISK},
    {Start::fromDisk, 1, "FindNextFileW", R"("Hard Disk\Tarvex\*", "TarvexHelper.exe")",
     UNREGISTERED " " HELPER " " BUZZER " " SETTINGS " " ON_DISK},
    {Start::fromDisk, 1, "FindNextFileW", R"("Hard Disk\Tarvex\*", "TouchBuzzerConfig.xml")", BUZZER},
    {Start::fromDisk, 1, "CreateDirectoryW", R"("\MMCMemory\Tarvex\data")", DATA},
    {Start::fromDisk, 1, "CreateDirectoryW", R"("\MMCMemory\Tarvex\data\deep")", DEEP},
    {Start::fromDisk, 1, "CopyFileW", R"("Hard Disk\Tarvex\data\deep\table.bin")", TABLE},
    {Start::fromDisk, 1, "CopyFileW", R"("Hard Disk\Tarvex\readme.txt")", README},
    {Start::fromDisk, 1, "CopyFileW", R"("Hard Disk\Tarvex\Tarvex.exe")", APPLICATION},
    {Start::fromDisk, 1, "CopyFileW", R"("Hard Disk\Tarvex\TarvexHelper.exe")",
     UNREGISTERED " " HELPER " " FREQUENCY " " SETTINGS " " ON_DISK},
    {Start::fromDisk, 1, "CopyFileW", R"("Hard Disk\Tarvex\ScreenSaverConfig.xml")", SCREEN_SAVER},
    {Start::fromDisk, 1, "CopyFileW", R"("Hard Disk\Tarvex\TouchBuzzerConfig.xml")", BUZZER},
    // Renaming the disk's folder away: only direct entries of the disk with the prefix are cleaned up later.
    {Start::fromDisk, 1, "MoveFileW", R"("\Hard Disk\Tarvex", )",
     "+Hard Disk\\Tarvex\\ +Hard Disk\\Tarvex\\_rm_TarvexHelper.exe"},
    // Writing the settings before the hand-over: what was registered for cleanup is forgotten; a file cut short reads
    // as empty settings with log level 0.
    {Start::fromDisk, 1, "CreateFileW", R"("\MMCMemory\Tarvex\config.xml", 0x40000000)", ON_DISK},
    {Start::fromDisk, 1, "WriteFile", R"("\MMCMemory\Tarvex\config.xml")", SETTINGS " " ON_DISK},
    // Reading the settings: taken for missing, or for empty, and written back so.
    {Start::fromDisk, 2, "GetFileAttributesW", R"("\MMCMemory\Tarvex\config.xml")", ON_DISK},
    {Start::fromDisk, 2, "CreateFileW", R"("\MMCMemory\Tarvex\config.xml", 0x80000000)", SETTINGS " " ON_DISK},
    {Start::fromDisk, 2, "SetFilePointer", R"("\MMCMemory\Tarvex\config.xml", 0, 2)", SETTINGS " " ON_DISK},
    {Start::fromDisk, 2, "SetFilePointer", R"("\MMCMemory\Tarvex\config.xml", 0, 1)", SETTINGS " " ON_DISK, last},
    {Start::fromDisk, 2, "SetFilePointer", R"("\MMCMemory\Tarvex\config.xml", 0, 0)", SETTINGS " " ON_DISK, 2},
    {Start::fromDisk, 2, "ReadFile", R"("\MMCMemory\Tarvex\config.xml")", SETTINGS " " ON_DISK},
    {Start::inPlace, 1, "GetFileAttributesW", R"("\MMCMemory\Tarvex\config.xml")", SETTINGS " +MMCMemory\\_rm_old.exe"},
    {Start::inPlace, 1, "CreateFileW", R"("\MMCMemory\Tarvex\config.xml", 0x80000000)",
     SETTINGS " +MMCMemory\\_rm_old.exe"},
    {Start::inPlace, 1, "SetFilePointer", R"("\MMCMemory\Tarvex\config.xml", 0, 2)",
     SETTINGS " +MMCMemory\\_rm_old.exe"},
    {Start::inPlace, 1, "SetFilePointer", R"("\MMCMemory\Tarvex\config.xml", 0, 1)",
     SETTINGS " +MMCMemory\\_rm_old.exe", last},
    {Start::inPlace, 1, "SetFilePointer", R"("\MMCMemory\Tarvex\config.xml", 0, 0)",
     SETTINGS " +MMCMemory\\_rm_old.exe", 2},
    {Start::inPlace, 1, "ReadFile", R"("\MMCMemory\Tarvex\config.xml")", SETTINGS " +MMCMemory\\_rm_old.exe"},
    // Writing the association's last key: no check looks at it, so it is never written again.
    {Start::fromDisk, 2, "RegCreateKeyExW", R"(HKEY_CLASSES_ROOT, ".osr\ShellNew")", NEW_FILE},
    {Start::fromDisk, 2, "RegSetValueExW", R"(HKEY_CLASSES_ROOT, ".osr\ShellNew")", NEW_FILE},
    {Start::inPlace, 1, "RegCreateKeyExW", R"(HKEY_CLASSES_ROOT, ".osr\ShellNew")", NEW_FILE},
    {Start::inPlace, 1, "RegSetValueExW", R"(HKEY_CLASSES_ROOT, ".osr\ShellNew")", NEW_FILE},
    // Flushing: the next start finds everything in place, and does not flush. Lost if the power goes before an orderly
    // switching off.
    {Start::fromDisk, 2, "RegFlushKey", "HKEY_LOCAL_MACHINE", AUTORUN},
    {Start::fromDisk, 2, "RegFlushKey", "HKEY_CLASSES_ROOT", ASSOCIATION},
    {Start::inPlace, 1, "RegFlushKey", "HKEY_LOCAL_MACHINE", AUTORUN},
    {Start::inPlace, 1, "RegFlushKey", "HKEY_CLASSES_ROOT", ASSOCIATION},
    // The Zentrix cleanup, which nobody repeats when the backup has gone: locking the flash, deleting the executable.
    {Start::inPlace, 1, "CreateFileW", R"("\NANDFlash\Vol:")", flashWritable, 2},
    {Start::inPlace, 1, "DeviceIoControl", R"("\NANDFlash\Vol:", 0x7022c)", flashWritable},
    {Start::inPlace, 1, "DeleteFileW", R"("\NANDFlash\ZentrixHMI\ZentrixHMICE.exe")",
     "+NANDFlash\\ZentrixHMI\\_rm_ZentrixHMICE.exe"},
    // Writing the settings in place: the file is cut short.
    {Start::fromDisk, 2, "WriteFile", R"("\MMCMemory\Tarvex\config.xml")", SETTINGS},
    {Start::inPlace, 1, "WriteFile", R"("\MMCMemory\Tarvex\config.xml")", SETTINGS},
    // The panel's own frequency: written to the buzzer's settings once and for all, as it is then known.
    {Start::fromDisk, 2, "LoadLibraryW", R"("tagUserAPI.dll")", FREQUENCY},
    {Start::fromDisk, 2, "GetProcAddressW", R"(0x30000, "TAG_)", FREQUENCY},
    {Start::fromDisk, 2, "TAG_Open", "", FREQUENCY},
    {Start::fromDisk, 2, "TAG_Get_Data", "18, ", FREQUENCY},
    {Start::fromDisk, 2, "WriteFile", R"("\MMCMemory\Tarvex\TouchBuzzerConfig.xml")", FREQUENCY},
    {Start::inPlace, 1, "LoadLibraryW", R"("tagUserAPI.dll")", FREQUENCY},
    {Start::inPlace, 1, "GetProcAddressW", R"(0x30000, "TAG_)", FREQUENCY},
    {Start::inPlace, 1, "TAG_Open", "", FREQUENCY},
    {Start::inPlace, 1, "TAG_Get_Data", "18, ", FREQUENCY},
    {Start::inPlace, 1, "WriteFile", R"("\MMCMemory\Tarvex\TouchBuzzerConfig.xml")", FREQUENCY},
};

#undef ON_DISK
#undef SETTINGS
#undef DEEP
#undef TABLE
#undef DATA
#undef README
#undef APPLICATION
#undef NEW_FILE
#undef ASSOCIATION
#undef AUTORUN
#undef UNREGISTERED
#undef FREQUENCY
#undef HELPER
#undef SCREEN_SAVER
#undef BUZZER

inline bool isMeant(const KnownLoss& loss, Start start, std::uint32_t process, std::string_view function,
                    std::string_view arguments, std::uint32_t occurrence, std::uint32_t occurrences) {
    return loss.start == start && loss.process == process && loss.function == function &&
           arguments.starts_with(loss.arguments) &&
           (loss.occurrence == 0 || occurrence == (loss.occurrence == last ? occurrences : loss.occurrence));
}

inline std::string knownLoss(Start start, std::uint32_t process, const std::string& function,
                             const std::string& arguments, std::uint32_t occurrence, std::uint32_t occurrences) {
    for (const KnownLoss& loss : knownLosses)
        if (isMeant(loss, start, process, function, arguments, occurrence, occurrences))
            return std::string(loss.loss);
    return {};
}
