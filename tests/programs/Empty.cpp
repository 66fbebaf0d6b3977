// The smallest program that waits for messages.
#include <windows.h>

int WinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
