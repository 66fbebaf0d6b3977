// What the parts of the least share.
#pragma once

#include <windows.h>

#include <tinyxml2.h>

#define DISK L"\\Hard Disk"
#define INSTALLATION L"\\MMCMemory\\Tarvex"

inline constexpr DWORD SHARED = FILE_SHARE_READ | FILE_SHARE_WRITE;

// A line of the log: its beginning up to the message, whose place is returned; then its end, which writes it.
char* beginLine(char* line, const char* level);
void endLine(const char* line, char* end);
char* put(char* at, const char* text);
char* put(char* at, unsigned number, unsigned digits = 1);
void openLog();

bool load(tinyxml2::XMLDocument& document, const wchar_t* path);
void save(const tinyxml2::XMLPrinter& printer, const wchar_t* path);

extern CRITICAL_SECTION creation, loop, dispatch;
extern UINT screenSaverMessage;
UINT registerMessage(const wchar_t* name);
HANDLE createEvent();
// The window and its message loop.
void run(HANDLE loopDone);

// The start of the installed helper, without settings and eMMC statistics.
void start();
// Copies the folder of the disk.
extern "C" void leastCopy();
