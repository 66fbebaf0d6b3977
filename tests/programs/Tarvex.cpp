// Stands in for the application Tarvex: notes how it was started in "\MMCMemory\Tarvex\Tarvex.started", and ends.
#include <crt.h>
#include <windows.h>

#include <cstdio>

int WinMain(HINSTANCE, HINSTANCE, LPWSTR commandLine, int) {
    std::FILE* file = _wfopen(L"\\MMCMemory\\Tarvex\\Tarvex.started", L"a");
    if (!file)
        return 1;
    for (; *commandLine; ++commandLine)
        std::fputc(static_cast<char>(*commandLine), file);
    std::fputc('\n', file);
    return std::fclose(file) == 0 ? 0 : 1;
}
