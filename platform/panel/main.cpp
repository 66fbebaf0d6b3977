// The entry point of a program on the simulated panel. It does the work of the platform's loader before and after
// WinMain.
#include "platform/panel/Runtime.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <memory>

int main() {
    const char* commandLine = panel::Runtime::instance().processRecord().commandLine;
    const std::size_t capacity = std::strlen(commandLine) + 1;
    const auto text = std::make_unique<wchar_t[]>(capacity);
    panel::toWide(commandLine, text.get(), capacity);
    std::exit(WinMain(reinterpret_cast<HINSTANCE>(panel::handleOf(panel::moduleHandle)), nullptr, text.get(), 5));
}
