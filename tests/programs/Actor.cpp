// A program of the panel that does what its command line says, word by word; its exit code tells what failed:
//
//     sleep MS          set EVENT          wait EVENT         exit CODE
//     lock MUTEX        (creates and takes it; exit code 183 if it was there)
//     hold FILE         (opens it unshared)      start PATH   (a program, and waits for it; its exit code is the own)
//     move FROM TO
//     fill FILE         (writes it again and again, and never waits)
//     post CLASS NAME COUNT     send CLASS NAME COUNT        (wParam counts from 1; each must be answered with its
//     double) crash             (ends by a signal)   spin   (never waits)
#include "platform/panel/Client.h"

#include <windows.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string narrow(const std::wstring& text) {
    return {text.begin(), text.end()};
}

std::wstring next(std::wistringstream& words) {
    std::wstring word;
    words >> word;
    return word;
}

DWORD number(std::wistringstream& words) {
    return static_cast<DWORD>(std::stoul(next(words)));
}

HANDLE event(const std::wstring& name) {
    return CreateEventW(nullptr, TRUE, FALSE, name.c_str());
}

bool sendAll(std::wistringstream& words) {
    const std::uint32_t window = panel::findWindow(narrow(next(words)));
    const std::string message = narrow(next(words));
    const DWORD count = number(words);
    for (DWORD index = 1; index <= count; ++index)
        if (panel::sendMessage(window, message, index, 0) != 2 * static_cast<std::int64_t>(index))
            return false;
    return true;
}

void postAll(std::wistringstream& words) {
    const std::uint32_t window = panel::findWindow(narrow(next(words)));
    const std::string message = narrow(next(words));
    const DWORD count = number(words);
    for (DWORD index = 1; index <= count; ++index)
        panel::postMessage(window, message, index, 0);
}

int startAndWait(const std::wstring& path) {
    PROCESS_INFORMATION information{};
    STARTUPINFOW startup{};
    wchar_t nothing[] = L"";
    if (!CreateProcessW(path.c_str(), nothing, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &information))
        return static_cast<int>(GetLastError());
    DWORD code = 0;
    WaitForSingleObject(information.hProcess, INFINITE);
    GetExitCodeProcess(information.hProcess, &code);
    return static_cast<int>(code);
}

void fill(const std::wstring& path) {
    for (DWORD written = 0;;) {
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        WriteFile(file, "filled", 6, &written, nullptr);
        CloseHandle(file);
    }
}

} // namespace

int WinMain(HINSTANCE, HINSTANCE, LPWSTR commandLine, int) {
    std::wistringstream words(commandLine);
    for (std::wstring verb; words >> verb;) {
        if (verb == L"sleep")
            Sleep(number(words));
        else if (verb == L"set")
            EventModify(event(next(words)), EVENT_SET);
        else if (verb == L"wait")
            WaitForSingleObject(event(next(words)), INFINITE);
        else if (verb == L"exit")
            return static_cast<int>(number(words));
        else if (verb == L"lock") {
            const HANDLE mutex = CreateMutexW(nullptr, FALSE, next(words).c_str());
            if (GetLastError() == ERROR_ALREADY_EXISTS)
                return ERROR_ALREADY_EXISTS;
            WaitForSingleObject(mutex, INFINITE);
        } else if (verb == L"hold") {
            if (CreateFileW(next(words).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr) ==
                INVALID_HANDLE_VALUE)
                return static_cast<int>(GetLastError());
        } else if (verb == L"move") {
            const std::wstring from = next(words);
            if (!MoveFileW(from.c_str(), next(words).c_str()))
                return static_cast<int>(GetLastError());
        } else if (verb == L"start")
            return startAndWait(next(words));
        else if (verb == L"fill")
            fill(next(words));
        else if (verb == L"post")
            postAll(words);
        else if (verb == L"send" && !sendAll(words))
            return 2;
        else if (verb == L"spin")
            for (volatile bool ever = true; ever;) {
            }
        else if (verb == L"crash")
            std::abort();
    }
    return 0;
}
