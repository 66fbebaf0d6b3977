#include "bench/least/Least.h"

#include <msgqueue.h>
#include <pnp.h>

#include <cwchar>

namespace {

void log(const char* message, const char* level = ";INFO;") {
    char line[128];
    endLine(line, put(beginLine(line, level), message));
}

void setText(HKEY key, const wchar_t* name, const wchar_t* text) {
    RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                   static_cast<DWORD>((std::wcslen(text) + 1) * sizeof *text));
}

HKEY create(HKEY root, const wchar_t* path) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    RegCreateKeyExW(root, path, 0, nullptr, 0, 0, nullptr, &key, &disposition);
    return key;
}

void setClass(const wchar_t* path, const wchar_t* name, const wchar_t* text) {
    const HKEY key = create(HKEY_CLASSES_ROOT, path);
    setText(key, name, text);
    RegCloseKey(key);
}

void register_() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"init", 0, 0, &key) == ERROR_SUCCESS) {
        RegQueryValueExW(key, L"Launch61", nullptr, nullptr, nullptr, nullptr); // there is none
        RegCloseKey(key);
    }
    log("Configuring my autorun");
    key = create(HKEY_LOCAL_MACHINE, L"init");
    setText(key, L"Launch61", INSTALLATION L"\\TarvexHelper.exe");
    const BYTE predecessors[] = {50, 0};
    RegSetValueExW(key, L"Depend61", 0, REG_BINARY, predecessors, sizeof predecessors);
    RegFlushKey(HKEY_LOCAL_MACHINE);
    RegCloseKey(key);
    RegOpenKeyExW(HKEY_CLASSES_ROOT, L".osr", 0, 0, &key); // there is none
    log("Associate .osr file to Tarvex.exe");
    setClass(L"osrfile", L"", L"Orva Software Repository");
    setClass(L"osrfile\\DefaultIcon", L"", INSTALLATION L"\\Tarvex.exe,-128");
    setClass(L"osrfile\\shell\\open\\command", L"", L"\"" INSTALLATION L"\\Tarvex.exe\" \"%1\"");
    setClass(L".osr", L"", L"osrfile");
    setClass(L".osr\\ShellNew", L"NullFile", L"");
    RegFlushKey(HKEY_CLASSES_ROOT);
}

void saveSettings() {
    tinyxml2::XMLPrinter printer;
    printer.PushDeclaration("xml version=\"1.0\" encoding=\"UTF-8\"");
    printer.OpenElement("OrvaTarvex");
    printer.PushAttribute("Version", "1");
    printer.OpenElement("Settings");
    printer.OpenElement("Parameters");
    printer.PushAttribute("LogLevel", "2");
    printer.CloseElement();
    printer.OpenElement("CleanupDirectories");
    printer.CloseElement();
    printer.CloseElement();
    printer.CloseElement();
    save(printer, INSTALLATION L"\\config.xml");
}

bool hasStatistics() {
    HKEY key = nullptr;
    DWORD type = 0;
    wchar_t version[25] = {};
    DWORD size = sizeof version;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"ORVA", 0, 0, &key);
    RegQueryValueExW(key, L"Version", nullptr, &type, reinterpret_cast<BYTE*>(version), &size);
    RegCloseKey(key);
    const wchar_t* digit = version;
    while (*digit && *digit++ != L'.') {
    }
    unsigned minor = 0;
    for (; *digit >= L'0' && *digit <= L'9'; ++digit)
        minor = 10 * minor + static_cast<unsigned>(*digit - L'0');
    return minor >= 15;
}

struct DiskWatch {
    HANDLE stopEvent;
    HANDLE decided;
};

DWORD WINAPI watchDisks(LPVOID argument) {
    const auto& watch = *static_cast<const DiskWatch*>(argument);
    MSGQUEUEOPTIONS options{};
    options.dwSize = sizeof options;
    options.cbMaxMessage = 160;
    options.bReadAccess = TRUE;
    const HANDLE queue = CreateMsgQueue(nullptr, &options);
    constexpr GUID blockDrivers = {0xA4E7EDDA, 0xE575, 0x4252, {0x9D, 0x6B, 0x41, 0x95, 0xD4, 0x8B, 0xB8, 0x65}};
    RequestDeviceNotifications(&blockDrivers, queue, TRUE);
    EventModify(watch.decided, EVENT_SET);
    const HANDLE awaited[] = {queue, watch.stopEvent};
    WaitForMultipleObjects(2, awaited, FALSE, INFINITE);
    return 0;
}

} // namespace

void start() {
    createEvent(); // of touches, and of their end
    createEvent();
    CreateMutexW(nullptr, FALSE, L"OrvaTarvexHelper.0");
    GetLastError();
    GetFileAttributesW(INSTALLATION);
    char line[128];
    char* const message = beginLine(line, ";INFO;");
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(INSTALLATION L"\\*", &found);
    while (FindNextFileW(search, &found)) { // no log
    }
    FindClose(search);
    openLog();
    endLine(line, put(message, "Init of Helper"));
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    GetFileAttributesW(INSTALLATION L"\\config.xml");
    GetFileAttributesW(L"\\NANDFlash\\ZentrixHMI\\_backup_ZentrixHMICE.exe");
    register_();
    saveSettings();
    log("Module manager initialization");
    if (hasStatistics())
        return;
    const HANDLE loopDone = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    InitializeCriticalSection(&creation);
    InitializeCriticalSection(&loop);
    InitializeCriticalSection(&dispatch);
    DiskWatch disks{createEvent(), createEvent()};
    tinyxml2::XMLDocument document;
    if (!load(document, INSTALLATION L"\\ScreenSaverConfig.xml"))
        log("ScreenSaverModule;settings error", ";ERROR;");
    screenSaverMessage = registerMessage(L"ORVATarvexScreenSaverMsg");
    if (!load(document, INSTALLATION L"\\TouchBuzzerConfig.xml"))
        log("BuzzerModule;settings error", ";ERROR;");
    registerMessage(L"ORVATarvexBuzzerMsg");
    EventModify(disks.stopEvent, EVENT_RESET);
    EventModify(disks.decided, EVENT_RESET);
    const HANDLE decisions[] = {disks.decided, CreateThread(nullptr, 0, watchDisks, &disks, 0, nullptr)};
    WaitForMultipleObjects(2, decisions, FALSE, 20000);
    run(loopDone);
}
