// The entry of a program on the simulated panel: what the platform's loader does before and after WinMain.
#include "platform/panel/Runtime.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>

int main() {
    const char* commandLine = panel::Runtime::instance().processRecord().commandLine;
    std::wstring text(std::strlen(commandLine) + 1, L'\0');
    text.resize(panel::toWide(commandLine, text.data(), text.size()));
    std::exit(WinMain(reinterpret_cast<HINSTANCE>(panel::handleOf(panel::moduleHandle)), nullptr, text.data(), 5));
}
