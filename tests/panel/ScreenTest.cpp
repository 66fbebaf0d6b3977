// What the screen shows: windows that cover it.
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <vector>

using namespace testing_panel;

namespace {

std::vector<std::pair<UINT, WPARAM>> shown;

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SHOWWINDOW)
        shown.emplace_back(message, wParam);
    return DefWindowProcW(window, message, wParam, lParam);
}

void registerClass(const wchar_t* name, int brush) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.lpszClassName = name;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(brush));
    ASSERT_NE(windowClass.hbrBackground, nullptr);
    ASSERT_NE(RegisterClassW(&windowClass), 0);
}

HWND makeWindow(const wchar_t* name, DWORD style, DWORD extendedStyle, int x = 0, int width = 800) {
    return CreateWindowExW(extendedStyle, name, nullptr, style, x, 0, width, 480, nullptr, nullptr, nullptr, nullptr);
}

std::string cover() {
    return driver().status().screen.cover;
}

} // namespace

TEST(Screen, IsCoveredByTheUppermostVisibleWindow) {
    registerClass(L"Black", BLACK_BRUSH);
    registerClass(L"White", WHITE_BRUSH);
    const HWND black = makeWindow(L"Black", WS_POPUP, WS_EX_TOPMOST | WS_EX_TOOLWINDOW);
    EXPECT_EQ(cover(), "");
    EXPECT_EQ(ShowWindow(black, SW_SHOW), FALSE); // it was hidden
    EXPECT_EQ(cover(), "Black");
    EXPECT_EQ(driver().status().screen.background, "black");
    const HWND white = makeWindow(L"White", WS_POPUP | WS_VISIBLE, 0);
    EXPECT_EQ(cover(), "Black"); // topmost, though the other one came later
    EXPECT_EQ(ShowWindow(black, SW_HIDE), TRUE);
    EXPECT_EQ(cover(), "White");
    EXPECT_EQ(driver().status().screen.background, "white");
    makeWindow(L"Black", WS_POPUP | WS_VISIBLE, WS_EX_TOPMOST, 1); // leaves a column free
    EXPECT_EQ(cover(), "White");
    DestroyWindow(white);
    EXPECT_EQ(cover(), "");
    EXPECT_EQ(shown, (std::vector<std::pair<UINT, WPARAM>>{
                         {WM_SHOWWINDOW, 1}, {WM_SHOWWINDOW, 1}, {WM_SHOWWINDOW, 0}, {WM_SHOWWINDOW, 1}}));
}
