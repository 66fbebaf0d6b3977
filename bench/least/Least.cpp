// The least that the helper's operations can take on a panel: the same platform calls with the same bytes, in straight
// code. No classes of the helper's, no memory but the XML library's. A document that is only written is never built:
// its elements are printed one by one. Numbers are formatted by hand; what fails ends the operation. bench/costs.py
// runs it in the helper's place and sets its instructions beside the helper's. Its argument says what it does before
// the message loop:
//
//     (none)   the start of the installed helper, without settings and eMMC statistics
//     touches  opens the log and waits for touches and commands
//     statistics  updates those of the eMMC
//     copy     copies the folder of the disk
#include "bench/least/Least.h"

#include <cstring>
#include <cwchar>
#include <utf8.h>

#define LOG_FILE INSTALLATION L"\\helper_log0.txt"

CRITICAL_SECTION creation, loop, dispatch;
UINT screenSaverMessage;

// ---- text and numbers

char* put(char* at, const char* text) {
    while (*text)
        *at++ = *text++;
    return at;
}

namespace {

unsigned tenth(unsigned number) { // the processor does not divide
    return static_cast<unsigned>(number * 0xCCCCCCCDULL >> 35);
}

} // namespace

char* put(char* at, unsigned number, unsigned digits) {
    char reversed[10];
    unsigned count = 0;
    for (; number != 0 || count < digits; number = tenth(number))
        reversed[count++] = static_cast<char>('0' + number - 10 * tenth(number));
    while (count != 0)
        *at++ = reversed[--count];
    return at;
}

namespace {

// UTF-8 to 16 bits.
void widen(wchar_t* at, const char* text) {
    while (static_cast<signed char>(*text) > 0)
        *at++ = static_cast<wchar_t>(*text++);
    if (*text != 0) { // the rest is not ASCII alone
        static char valid[3 * MAX_PATH];
        const char* const end = utf8::replace_invalid(text, text + std::strlen(text), valid, 0xFFFDU);
        at = utf8::unchecked::utf8to16(static_cast<const char*>(valid), end, at);
    }
    *at = 0;
}

// ---- log

HANDLE logFile = INVALID_HANDLE_VALUE;

} // namespace

// A line's beginning, and where its message goes.
char* beginLine(char* at, const char* level) {
    SYSTEMTIME time;
    GetSystemTime(&time);
    at = put(at, time.wYear, 4);
    *at++ = '-';
    at = put(at, time.wMonth, 2);
    *at++ = '-';
    at = put(at, time.wDay, 2);
    *at++ = ' ';
    at = put(at, time.wHour, 2);
    *at++ = ':';
    at = put(at, time.wMinute, 2);
    *at++ = ':';
    at = put(at, time.wSecond, 2);
    *at++ = ',';
    at = put(at, GetTickCount());
    return put(at, level);
}

void endLine(const char* line, char* end) {
    const HANDLE file =
        CreateFileW(LOG_FILE, GENERIC_READ, SHARED, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    SetFilePointer(file, 0, nullptr, FILE_END); // below the limit
    CloseHandle(file);
    *end++ = '\n';
    SetFilePointer(logFile, 0, nullptr, FILE_END);
    DWORD written = 0;
    WriteFile(logFile, line, static_cast<DWORD>(end - line), &written, nullptr);
}

void openLog() {
    logFile = CreateFileW(LOG_FILE, GENERIC_WRITE, SHARED, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// What the table's line is: a text and a number.
extern "C" [[gnu::noinline]] void leastLine(const char* message, unsigned number) {
    char line[128];
    endLine(line, put(put(beginLine(line, ";INFO;"), message), number));
}

// ---- documents

bool load(tinyxml2::XMLDocument& document, const wchar_t* path) {
    static char text[4096];
    const HANDLE file = CreateFileW(path, GENERIC_READ, SHARED, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    DWORD size = 0;
    ReadFile(file, text, sizeof text, &size, nullptr);
    CloseHandle(file);
    return document.Parse(text, size) == tinyxml2::XML_SUCCESS;
}

void save(const tinyxml2::XMLPrinter& printer, const wchar_t* path) {
    const HANDLE file =
        CreateFileW(path, GENERIC_WRITE, SHARED, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, printer.CStr(), static_cast<DWORD>(printer.CStrSize()) - 1, &written, nullptr);
    CloseHandle(file);
}

namespace {

struct Command {
    wchar_t filePath[MAX_PATH];
    wchar_t arguments[MAX_PATH];
    bool waitCompletion;
};
Command commands[32];
unsigned commandCount;

extern "C" [[gnu::noinline]] bool leastDocument() {
    tinyxml2::XMLDocument document;
    const tinyxml2::XMLElement* section = nullptr;
    commandCount = 0;
    if (!load(document, DISK L"\\Tarvex.xml") || (section = document.FirstChildElement("Tarvex")) == nullptr)
        return false;
    for (section = section->FirstChildElement(); section != nullptr; section = section->NextSiblingElement()) {
        if (std::strcmp(section->Name(), "Commands") != 0)
            continue;
        for (const auto* element = section->FirstChildElement(); element != nullptr && commandCount < 32;
             element = element->NextSiblingElement()) {
            const char* const type = element->Attribute("Type");
            const char* const path = element->Attribute("FilePath");
            const char* const arguments = element->Attribute("Arguments");
            const char* const wait = element->Attribute("WaitCompletion");
            if (std::strcmp(element->Name(), "Command") != 0 || !type || std::strcmp(type, "RunProcess") != 0 ||
                !path || !arguments || !wait || (std::strcmp(wait, "0") != 0 && std::strcmp(wait, "1") != 0))
                return false;
            Command& command = commands[commandCount++];
            widen(command.filePath, path);
            widen(command.arguments, arguments);
            command.waitCompletion = *wait == '1';
        }
    }
    return true;
}

// ---- screen saver's settings

std::int32_t timeout;
int dimLevel;
bool blackScreen;

unsigned reload() {
    tinyxml2::XMLDocument document;
    const tinyxml2::XMLElement* element = nullptr;
    bool enabled = false;
    int milliseconds = 0;
    int level = 0;
    if (!load(document, INSTALLATION L"\\ScreenSaverConfig.xml") ||
        (element = document.FirstChildElement("ScreenSaver")) == nullptr ||
        (element = element->FirstChildElement("Settings")) == nullptr)
        return 2;
    const tinyxml2::XMLElement* const values[] = {element->FirstChildElement("Enabled"),
                                                  element->FirstChildElement("UserInactivityTimeout"),
                                                  element->FirstChildElement("MinLuminosityLevel")};
    if (!values[0] || values[0]->QueryBoolText(&enabled) != tinyxml2::XML_SUCCESS || !values[1] ||
        values[1]->QueryIntText(&milliseconds) != tinyxml2::XML_SUCCESS || !values[2] ||
        values[2]->QueryIntText(&level) != tinyxml2::XML_SUCCESS)
        return 2;
    timeout = milliseconds;
    blackScreen = level == 0;
    dimLevel = level * 255 / 256;
    char line[128];
    char* end = put(beginLine(line, ";INFO;"), "ScreenSaverModule;settings loaded;timeout: ");
    end = put(put(end, static_cast<unsigned>(milliseconds)), " backlight: ");
    end = put(put(end, static_cast<unsigned>(level)), " enabled: ");
    *end++ = enabled ? '1' : '0';
    endLine(line, end);
    return 0;
}

// ---- eMMC statistics

constexpr const char* STATISTICS[] = {"SessionWriteCountHigh", "SessionWriteCountLow", "SessionDuration",
                                      "TotalWriteCountHigh",   "TotalWriteCountLow",   "TotalDuration"};
#define STATISTICS_FILE INSTALLATION L"\\EMMC.xml"

void readStatistics(unsigned (&values)[6]) {
    if (GetFileAttributesW(STATISTICS_FILE) == INVALID_FILE_ATTRIBUTES)
        return;
    tinyxml2::XMLDocument document;
    const tinyxml2::XMLElement* settings = nullptr;
    if (!load(document, STATISTICS_FILE) || (settings = document.FirstChildElement("EMMC")) == nullptr ||
        (settings = settings->FirstChildElement("Settings")) == nullptr)
        return;
    for (unsigned index = 0; index < 6; ++index)
        if (const auto* element = settings->FirstChildElement(STATISTICS[index]))
            element->QueryUnsignedText(&values[index]);
}

void writeStatistics(const unsigned (&values)[6]) {
    tinyxml2::XMLPrinter printer;
    printer.PushDeclaration("xml version=\"1.0\" encoding=\"UTF-8\"");
    printer.OpenElement("EMMC");
    printer.OpenElement("Settings");
    for (unsigned index = 0; index < 6; ++index) {
        char text[11];
        *put(text, values[index]) = 0;
        printer.OpenElement(STATISTICS[index]);
        printer.PushText(text);
        printer.CloseElement();
    }
    printer.CloseElement();
    printer.CloseElement();
    save(printer, STATISTICS_FILE);
}

void updateStatistics(DWORD elapsed) {
    unsigned values[6] = {};
    readStatistics(values);
    unsigned count = 0;
    DWORD returned = 0;
    const HANDLE driver =
        CreateFileW(L"SHC1:", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    DeviceIoControl(driver, 0x72EE8, nullptr, 0, &count, sizeof count, &returned, nullptr);
    CloseHandle(driver);
    values[4] += count - values[1]; // without the upper halves
    values[1] = count;
    values[2] += elapsed / 1000;
    values[5] += elapsed / 1000;
    writeStatistics(values);
}

DWORD WINAPI keepStatistics(LPVOID stopEvent) {
    unsigned values[6] = {};
    readStatistics(values);
    values[0] = values[1] = values[2] = 0;
    writeStatistics(values);
    updateStatistics(GetTickCount());
    while (WaitForSingleObject(stopEvent, 300000) == WAIT_TIMEOUT)
        updateStatistics(300000);
    return 0;
}

// ---- touches

HANDLE events[2]; // touched, to be stopped
HANDLE buzzer;
HHOOK hook;

LRESULT CALLBACK onMouse(int code, WPARAM wParam, LPARAM lParam) {
    if (wParam == WM_LBUTTONDOWN || wParam == WM_RBUTTONDOWN)
        EventModify(events[0], EVENT_SET);
    return CallNextHookEx(hook, code, wParam, lParam);
}

DWORD WINAPI click(LPVOID) {
    while (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0 + 1) {
        unsigned request[] = {3400, 50};
        DWORD returned = 0;
        DeviceIoControl(buzzer, 0x01012EF4, request, sizeof request, nullptr, 0, &returned, nullptr);
    }
    return 0;
}

// ---- window

UINT ownMessage;

constexpr unsigned READ_DOCUMENT = 2; // of this program alone

unsigned answer(const char* received, const char* handled, unsigned command, bool isScreenSaver) {
    leastLine(received, command);
    unsigned result = 1;
    if (isScreenSaver && command == 1)
        result = reload();
    char line[128];
    endLine(line, put(put(put(put(beginLine(line, ";INFO;"), handled), command), " result: "), result));
    return result;
}

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    static bool known = false;
    known = known || message == WM_CREATE;
    if (!known)
        return DefWindowProcW(window, message, wParam, lParam);
    EnterCriticalSection(&dispatch);
    LRESULT result = 0;
    const auto command = static_cast<unsigned>(wParam);
    if (message == ownMessage && command == READ_DOCUMENT)
        result = leastDocument() ? 0 : 2;
    else if (message == ownMessage && message != 0)
        result = answer("IPCDispatcher;message received ", "IPCDispatcher;message handled ", command, false);
    else if (message == screenSaverMessage && message != 0)
        result = answer("ScreenSaverModule;message received ", "ScreenSaverModule;message handled ", command, true);
    else
        result = DefWindowProcW(window, message, wParam, lParam);
    LeaveCriticalSection(&dispatch);
    return result;
}

} // namespace

UINT registerMessage(const wchar_t* name) {
    const UINT message = RegisterWindowMessageW(name);
    EnterCriticalSection(&dispatch);
    LeaveCriticalSection(&dispatch);
    return message;
}

void run(HANDLE loopDone) {
    ownMessage = registerMessage(L"ORVATarvexMsg");
    EnterCriticalSection(&creation);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"ORVATarvexHelper";
    RegisterClassW(&windowClass);
    CreateWindowExW(0, L"ORVATarvexHelper", nullptr, 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                    nullptr, nullptr, nullptr, nullptr);
    LeaveCriticalSection(&creation);
    EnterCriticalSection(&loop);
    EventModify(loopDone, EVENT_RESET);
    LeaveCriticalSection(&loop);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

HANDLE createEvent() {
    return CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

namespace {

void waitForTouchesAndCommands() {
    InitializeCriticalSection(&creation);
    InitializeCriticalSection(&loop);
    InitializeCriticalSection(&dispatch);
    openLog();
    screenSaverMessage = registerMessage(L"ORVATarvexScreenSaverMsg");
    events[0] = createEvent();
    events[1] = createEvent();
    buzzer =
        CreateFileW(L"BZR1:", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    hook = SetWindowsHookExW(WH_MOUSE_LL, onMouse, GetModuleHandleW(nullptr), 0);
    CreateThread(nullptr, 0, click, nullptr, 0, nullptr);
    run(createEvent());
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPWSTR commandLine, int) {
    if (*commandLine == L't') {
        waitForTouchesAndCommands();
    } else if (*commandLine == L's') {
        keepStatistics(createEvent());
    } else if (*commandLine == L'c') {
        leastCopy();
        run(createEvent());
    } else {
        start();
    }
    return 0;
}
