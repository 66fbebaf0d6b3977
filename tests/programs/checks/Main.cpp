// Proves what differs by width or by machine between the helper's two builds and no scenario reaches:
//
//     PanelChecks.exe GROUP     exit code: how many checks failed; 255: there is no such group
#include "OrvaUtils/Text.h"
#include "tests/programs/checks/Check.h"

#include <windows.h>

#include <atomic>

namespace checks {

namespace {

std::atomic<int> failed = 0;

struct Group {
    const wchar_t* name;
    void (*run)();
};

constexpr Group groups[] = {
    {L"text", text},
    {L"exceptions", exceptions},
    {L"statics", statics},
    {L"heap", heap},
    {L"log", log},
    {L"log-of-two-files", logOfTwoFiles},
    {L"window", window},
    {L"stack", stack},
    {L"write-constant", writeConstant},
    {L"write-code", writeCode},
    {L"escape-main", escapeFromMain},
    {L"escape-thread", escapeFromThread},
    {L"escape-procedure", escapeFromProcedure},
};

} // namespace

void report(bool passed, const char* condition, const char* file, int line) {
    if (passed)
        return;
    ++failed;
    const std::string message = std::string(file) + ':' + std::to_string(line) + ": " + condition + '\n';
    OutputDebugStringW(OrvaUtils::widen(message).c_str());
}

int failures() {
    return failed;
}

} // namespace checks

int WinMain(HINSTANCE, HINSTANCE, LPWSTR commandLine, int) {
    for (const checks::Group& group : checks::groups)
        if (std::wstring(commandLine) == group.name) {
            group.run();
            return checks::failures();
        }
    return 255;
}
