// The smallest program that waits for messages: what the C++ run time alone costs until then (script/measure).
#include <windows.h>

int WinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
