// What a failing call or a power cut costs: for good, as no later start can know what was lost, or, in parentheses, of
// what the helper does for the rest of its life. docs/reliability.md has the same in words.
#include "tests/scenario/Sweep.h"

// The disk's folder is deleted whatever was copied; the leftovers on the disk are registered for cleanup in the
// settings alone, by a helper that starts once.
#define ON_DISK "+Hard Disk\\_rm_Tarvex\\ +Hard Disk\\_rm_Tarvex\\_rm_TarvexHelper.exe"
#define FOLDER_ON_DISK "+Hard Disk\\Tarvex\\ +Hard Disk\\Tarvex\\_rm_TarvexHelper.exe"
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
#define STATISTICS "MMCMemory\\Tarvex\\EMMC.xml"
#define WRITES "~" STATISTICS ": writes"
#define TOTALS "~" STATISTICS " " WRITES
#define NEVER_RUN ASSOCIATION " " AUTORUN " -" STATISTICS " -" STATISTICS ": writes"
#define SCREEN_SAVER "-MMCMemory\\Tarvex\\ScreenSaverConfig.xml"
#define BUZZER "-MMCMemory\\Tarvex\\TouchBuzzerConfig.xml"
#define FREQUENCY "~MMCMemory\\Tarvex\\TouchBuzzerConfig.xml"
#define HELPER "-MMCMemory\\Tarvex\\TarvexHelper.exe"

#define SETTINGS_FILE R"("\MMCMemory\Tarvex\config.xml")"
#define STATISTICS_FILE R"("\MMCMemory\Tarvex\EMMC.xml")"
#define SAVER_FILE R"("\MMCMemory\Tarvex\ScreenSaverConfig.xml")"
#define BUZZER_FILE R"("\MMCMemory\Tarvex\TouchBuzzerConfig.xml")"
#define DISK_FILE R"("\Hard Disk\Tarvex.xml")"

namespace {

const KnownLoss single[] = {
    // Copying: what cannot be listed, made or copied is gone with the disk's folder.
    {installer, "GetFileAttributesW", R"("Hard Disk\Tarvex\Tarvex.exe")",
     SCREEN_SAVER " " APPLICATION " " BUZZER " " DATA " " README, 1},
    {installer, "FindFirstFileW", R"("Hard Disk\Tarvex\*")",
     NEVER_RUN " " SCREEN_SAVER " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " DATA " " README " " ON_DISK},
    {installer, "FindFirstFileW", R"("Hard Disk\Tarvex\data\*")", DEEP},
    {installer, "FindFirstFileW", R"("Hard Disk\Tarvex\data\deep\*")", TABLE},
    {installer, "FindNextFileW", R"("Hard Disk\Tarvex\*", "readme.txt")",
     NEVER_RUN " " SCREEN_SAVER " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " README " " ON_DISK},
    {installer, "FindNextFileW", R"("Hard Disk\Tarvex\*", "ScreenSaverConfig.xml")",
     NEVER_RUN " " SCREEN_SAVER " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " ON_DISK},
    {installer, "FindNextFileW", R"("Hard Disk\Tarvex\*", "Tarvex.exe")",
     NEVER_RUN " " APPLICATION " " HELPER " " BUZZER " " SETTINGS " " ON_DISK},
    {installer, "FindNextFileW", R"("Hard Disk\Tarvex\*", "TarvexHelper.exe")",
     NEVER_RUN " " HELPER " " BUZZER " " SETTINGS " " ON_DISK},
    {installer, "FindNextFileW", R"("Hard Disk\Tarvex\*", "TouchBuzzerConfig.xml")", BUZZER},
    {installer, "CreateDirectoryW", R"("\MMCMemory\Tarvex\data")", DATA},
    {installer, "CreateDirectoryW", R"("\MMCMemory\Tarvex\data\deep")", DEEP},
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\data\deep\table.bin")", TABLE},
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\readme.txt")", README},
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\Tarvex.exe")", APPLICATION},
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\TarvexHelper.exe")",
     NEVER_RUN " " HELPER " " FREQUENCY " " SETTINGS " " ON_DISK},
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\ScreenSaverConfig.xml")", SCREEN_SAVER},
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\TouchBuzzerConfig.xml")", BUZZER},
    // Renaming the disk's folder away: only direct entries of the disk with the prefix are cleaned up later.
    {installer, "MoveFileW", R"("\Hard Disk\Tarvex", )", FOLDER_ON_DISK},
    // Writing the settings before the hand-over: what was registered for cleanup is forgotten; a file cut short reads
    // as empty settings with log level 0.
    {installer, "CreateFileW", R"("\MMCMemory\Tarvex\config.xml", 0x40000000)", ON_DISK},
    {installer, "WriteFile", SETTINGS_FILE, SETTINGS " " ON_DISK},
    // Reading the settings: taken for missing, or for empty, and written back so.
    {installed, "GetFileAttributesW", SETTINGS_FILE, ON_DISK},
    {installed, "CreateFileW", R"("\MMCMemory\Tarvex\config.xml", 0x80000000)", SETTINGS " " ON_DISK},
    {installed, "ReadFile", SETTINGS_FILE ",", SETTINGS " " ON_DISK},
    {inPlace, "GetFileAttributesW", SETTINGS_FILE, SETTINGS " +MMCMemory\\_rm_old.exe"},
    {inPlace, "CreateFileW", R"("\MMCMemory\Tarvex\config.xml", 0x80000000)", SETTINGS " +MMCMemory\\_rm_old.exe"},
    {inPlace, "ReadFile", SETTINGS_FILE ",", SETTINGS " +MMCMemory\\_rm_old.exe"},
    // Writing the settings in place: the file is cut short.
    {installed | inPlace | alive, "WriteFile", SETTINGS_FILE, SETTINGS},
    // Writing the association's last key: no check looks at it, so it is never written again.
    {installed | inPlace | alive, "RegCreateKeyExW", R"(HKEY_CLASSES_ROOT, ".osr\ShellNew")", NEW_FILE},
    {installed | inPlace | alive, "RegSetValueExW", R"(HKEY_CLASSES_ROOT, ".osr\ShellNew")", NEW_FILE},
    // Flushing: the next start finds everything in place, and does not flush. Lost if the power goes before an orderly
    // switching off.
    {installed | inPlace | alive, "RegFlushKey", "HKEY_LOCAL_MACHINE", AUTORUN},
    {installed | inPlace | alive, "RegFlushKey", "HKEY_CLASSES_ROOT", ASSOCIATION},
    // The Zentrix cleanup, which nobody repeats when the backup has gone: locking the flash, deleting the executable.
    {inPlace, "CreateFileW", R"("\NANDFlash\Vol:")", flashWritable, 2},
    {inPlace, "DeviceIoControl", R"("\NANDFlash\Vol:"#2, 0x7022c)", flashWritable},
    {inPlace, "DeleteFileW", R"("\NANDFlash\ZentrixHMI\ZentrixHMICE.exe")",
     "+NANDFlash\\ZentrixHMI\\_rm_ZentrixHMICE.exe"},
    // The panel's own frequency: written to the buzzer's settings once and for all, as it is then known.
    {installed | inPlace, "LoadLibraryW", R"("tagUserAPI.dll")", FREQUENCY},
    {installed | inPlace, "GetProcAddressW", R"(0x30000, "TAG_)", FREQUENCY},
    {installed | inPlace, "TAG_Open", "", FREQUENCY},
    {installed | inPlace, "TAG_Get_Data", "18, ", FREQUENCY},
    {installed | inPlace, "WriteFile", BUZZER_FILE, FREQUENCY},
    // The statistics, taken for missing: they begin again. An update that does not get the counter takes the session's
    // writes off; the next one would add them.
    {inPlace | alive, "GetFileAttributesW", STATISTICS_FILE, TOTALS},
    {alive, "CreateFileW", R"("SHC1:")", WRITES, 2},
    {alive, "DeviceIoControl", R"("SHC1:"#2)", WRITES},
    // The screen saver: its settings, its thread, the user's activity (a wait that fails counts as some), the black
    // window, and the driver, which ends the watching when it refuses.
    {alive, "CreateFileW", SAVER_FILE, "~(dims)", 1},
    {alive, "ReadFile", SAVER_FILE ",", "~(dims)"},
    {alive, "CreateFileW", SAVER_FILE, "~(reloads)", 2},
    {alive, "ReadFile", SAVER_FILE "#2,", "~(reloads)"},
    {alive, "CreateThread", "", "~(dims)", 2},
    {alive, "OpenEventW", R"(0x1f0003, 0, "PowerManager/UserActivity_)", "~(dims)"},
    {alive, "PostMessageW", "0x101, 0x401", "~(dims)"},
    {alive, "PostMessageW", "0x101, 0x402", "~(wakes)", 2}, // the first in the list is the main thread's, at the end
    {alive, "WaitForMultipleObjects", R"(2, "PowerManager/UserActivity_Active", event#8, 4294967295)", "~(dims)"},
    {alive, "ShowWindow", "0x101, 5", "~(dims)"},
    {alive, "ShowWindow", "0x101, 0", "~(wakes)", 1},
    {alive, "DeviceIoControl", R"("BKL1:", 0x1130408)", "~(dims) ~(wakes)", 2},
    {alive, "DeviceIoControl", R"("BKL1:", 0x113040c, {00)", "~(dims) ~(wakes)"},
    {alive, "DeviceIoControl", R"("BKL1:", 0x113040c, {c8)", "~(wakes)"},
    // The buzzer: its settings, its thread (a wait that fails clicks), the hook, and the driver.
    {alive, "CreateFileW", BUZZER_FILE, "~(clicks)", 1},
    {alive, "ReadFile", BUZZER_FILE ",", "~(clicks)"},
    {alive, "CreateFileW", BUZZER_FILE, "~(reloads)", 2},
    {alive, "ReadFile", BUZZER_FILE "#2,", "~(reloads)"},
    {alive, "CreateFileW", BUZZER_FILE, "~(clicks again) ~(reloads)", 3},
    {alive, "ReadFile", BUZZER_FILE "#3,", "~(clicks again) ~(reloads)"},
    {alive, "CreateThread", "", "~(clicks)", 3},
    {alive, "WaitForMultipleObjects", "2, event, event#2", "~(clicks)"},
    {alive, "SetWindowsHookExW", "", "~(clicks)", 1},
    {alive, "SetWindowsHookExW", "", "~(clicks again)", 2},
    {alive, "EventModify", "event, 3", "~(clicks)", 1},
    {alive, "EventModify", "event, 3", "~(clicks again)", 2},
    {alive, "CreateFileW", R"("BZR1:")", "~(clicks)", 1},
    {alive, "CreateFileW", R"("BZR1:")", "~(clicks again)", 2},
    {alive, "DeviceIoControl", R"("BZR1:",)", "~(clicks)"},
    {alive, "DeviceIoControl", R"("BZR1:"#2)", "~(clicks again)"},
    // Disks: the watch ends without its queue, its notification or a function of the storage manager; a file that
    // cannot be read is none.
    {alive, "CreateThread", "", "~(starts)", 4},
    {alive, "CreateMsgQueue", "", "~(starts)"},
    {alive, "RequestDeviceNotifications", "", "~(starts)"},
    {alive, "LoadLibraryW", R"("coredll.dll")", "~(starts)"},
    {alive, "GetProcAddressW", "0x20000, ", "~(starts)"},
    {alive, "GetFileAttributesW", DISK_FILE, "~(starts)"},
    {alive, "CreateFileW", DISK_FILE, "~(starts)"},
    {alive, "ReadFile", DISK_FILE ",", "~(starts)"},
    {alive, "CreateProcessW", "", "~(starts)"},
};

// What is tried again, and then makes up for one failure but not for failing from then on.
const KnownLoss lasting[] = {
    {alive, "CreateFileW", STATISTICS_FILE, TOTALS},
    {alive, "ReadFile", STATISTICS_FILE, TOTALS},
    {alive, "WriteFile", STATISTICS_FILE, TOTALS},
    {alive, "CreateThread", "", "~(clicks again)", 5}, // the one before serves on, if there is one
    {alive, "OpenStore", "", "~(starts)"},
    {alive, "FindFirstPartition", "", "~(starts)"},
};

// What a power cut costs; what the log loses stands in CutSweepTest.cpp.
const KnownLoss ofCuts[] = {
    // Copying: once the application is there only the helper is copied, and then nothing; the disk's folder goes.
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\TarvexHelper.exe")", BUZZER},
    {installer, "CopyFileW", R"("Hard Disk\Tarvex\TouchBuzzerConfig.xml")", BUZZER},
    // Deleting: once the helper on the disk is renamed nobody can start it; what is left is not yet registered.
    {installer, "DeleteFileW", R"("\Hard Disk\Tarvex\TouchBuzzerConfig.xml")",
     "+Hard Disk\\Tarvex\\ +Hard Disk\\Tarvex\\TouchBuzzerConfig.xml +Hard Disk\\Tarvex\\_rm_TarvexHelper.exe"},
    {installer, "RemoveDirectoryW", R"("\Hard Disk\Tarvex")", FOLDER_ON_DISK},
    {installer, "MoveFileW", R"("\Hard Disk\Tarvex", )", FOLDER_ON_DISK},
    {installer, "WriteFile", R"("\MMCMemory\Tarvex\helper_log0.txt", 58)", ON_DISK}, // "Restart from right path needed"
    {installer, "CreateFileW", SETTINGS_FILE, ON_DISK},
    {installer, written, SETTINGS_FILE, SETTINGS " " ON_DISK},
    // A document is empty from its opening until its data are committed: with "kept" by the write, otherwise by
    // closing it. With "torn" it may be whole before.
    {installed | inPlace | alive, written, SETTINGS_FILE, SETTINGS},
    {installed | inPlace, written, BUZZER_FILE, FREQUENCY},
    {inPlace | alive, written, STATISTICS_FILE, TOTALS},
    // The writes that the eMMC has counted, and the file does not hold.
    {installed, written, STATISTICS_FILE "#3", WRITES},
    {installed | inPlace | alive, "CreateFileW", STATISTICS_FILE, WRITES, 2},
    {alive, "CreateFileW", STATISTICS_FILE, WRITES, 3},
};

} // namespace

const std::span<const KnownLoss> knownLosses = single;
const std::span<const KnownLoss> lastingLosses = lasting;
const std::span<const KnownLoss> cutLosses = ofCuts;
