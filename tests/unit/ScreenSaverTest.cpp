#include "modules/screensaver/ScreenSaver.h"
#include "modules/screensaver/ScreenBackLightException.h"
#include "modules/screensaver/UserInactivityMonitorException.h"
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace testing_panel;
using panel::Behaviour;
using Words = std::vector<std::uint32_t>;

namespace {

constexpr wchar_t CLASS_NAME[] = L"ORVAScreenSaver";

// The message of the screen saver's exception, behind what tells its class.
std::wstring failure(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const ScreenBackLightException& exception) {
        return L"backlight: " + exception.message();
    } catch (const UserInactivityMonitorException& exception) {
        return L"monitor: " + exception.message();
    } catch (const std::runtime_error&) {
        return L"another";
    }
    return L"none";
}

// Handles what was posted to the windows of this thread.
void pump() {
    PostMessageW(nullptr, WM_NULL, 0, 0);
    MSG message{};
    do {
        GetMessageW(&message, nullptr, 0, 0);
        DispatchMessageW(&message);
    } while (message.hwnd != nullptr);
}

std::string windows() {
    std::string text;
    for (const panel::WindowStatus& window : driver().status().windows) {
        text += window.className + (window.visible ? " shown " : " hidden ");
    }
    return text;
}

Words lastWritten() {
    const auto requests = devices().requests("BKL1");
    return requests.empty() || requests.back().operation != "write" ? Words{} : requests.back().words;
}

void refuse(const char* operation) {
    devices().setBehaviour("BKL1", {Behaviour::Kind::refuse, 31}, operation);
}

void obey() {
    devices().setBehaviour("BKL1", {});
}

} // namespace

TEST(ScreenBackLight, KeepsWhatItDoesNotUnderstandAsItWasWhenOpened) {
    devices().setValues("BKL1", {10, 11, 12, 13});
    ScreenBackLight backLight;
    backLight.dim();
    EXPECT_EQ(lastWritten(), (Words{0, 11, 0, 13})) << "the level at first";
    backLight.setLevel(1);
    backLight.dim();
    EXPECT_EQ(lastWritten(), (Words{255, 11, 255, 13}));
    backLight.setLevel(0.5F);
    devices().setValues("BKL1", {20, 21, 22, 23});
    backLight.dim();
    EXPECT_EQ(lastWritten(), (Words{127, 11, 127, 13}));
    backLight.restore();
    EXPECT_EQ(lastWritten(), (Words{20, 11, 22, 13}));
    devices().setValues("BKL1", {30, 31, 32, 33});
    panel::Fault nothingRead;
    nothingRead.function = "DeviceIoControl";
    nothingRead.call = 9;
    nothingRead.answer = 1;
    driver().addFault(nothingRead);
    backLight.dim();
    backLight.restore();
    EXPECT_EQ(lastWritten(), (Words{20, 11, 22, 13})) << "an answer without words";
}

TEST(ScreenSaver, EngagesAndRestoresOnce) {
    panel::setUserActive(false);
    ScreenSaver* const screenSaver = ScreenSaver::create(GetModuleHandleW(nullptr), CLASS_NAME);
    pump();
    EXPECT_EQ(windows(), "ORVAScreenSaver hidden ");
    const auto requests = [] { return devices().requests("BKL1").size(); };
    ASSERT_EQ(requests(), 1U);
    screenSaver->notify(UserActivityEvent::Active);
    screenSaver->deactivate();
    EXPECT_EQ(requests(), 1U);
    screenSaver->notify(UserActivityEvent::Inactive);
    screenSaver->notify(UserActivityEvent::Inactive);
    screenSaver->activate();
    EXPECT_EQ(requests(), 3U);
    pump();
    EXPECT_EQ(windows(), "ORVAScreenSaver shown ");
    screenSaver->setLevel(1.0F / 256); // while engaged: what follows is the backlight alone
    screenSaver->notify(UserActivityEvent::Active);
    screenSaver->notify(UserActivityEvent::Active);
    EXPECT_EQ(requests(), 4U);
    pump();
    EXPECT_EQ(windows(), "ORVAScreenSaver hidden ");
    screenSaver->activate();
    pump();
    EXPECT_EQ(windows(), "ORVAScreenSaver hidden ");
    EXPECT_EQ(driver().status().backLight, (Words{0, 1, 0, 1}));
    ScreenSaver::remove(screenSaver);
    EXPECT_EQ(driver().status().backLight, (Words{200, 1, 200, 1}));
}

TEST(ScreenSaver, FinishesItsEndWhateverFailsAndThrowsOnlyThen) {
    struct Owner {
        ~Owner() noexcept(false) {
            ScreenSaver::remove(screenSaver);
        }
        ScreenSaver* screenSaver = ScreenSaver::create(GetModuleHandleW(nullptr), CLASS_NAME);
    };
    for (const bool inFlight : {false, true}) {
        EXPECT_EQ(failure([&] {
                      const Owner owner;
                      owner.screenSaver->activate();
                      refuse("write");
                      if (inFlight) {
                          throw std::runtime_error("in flight");
                      }
                  }),
                  inFlight ? L"another" : L"backlight: Cannot update driver settings");
        pump();
        EXPECT_EQ(windows(), "");
        obey();
    }
}

TEST(ScreenSaver, StaysForAMonitorThatDoesNotEnd) {
    panel::setUserActive(false);
    ScreenSaver* screenSaver = ScreenSaver::create(GetModuleHandleW(nullptr), CLASS_NAME);
    devices().setBehaviour("BKL1", {Behaviour::Kind::block, 0}, "write");
    advance(60000);
    driver().settle();
    EXPECT_EQ(failure([&] { ScreenSaver::remove(screenSaver); }), L"monitor: Failed to terminate monitor thread");
    EXPECT_EQ(GetTickCount(), 80000U);
    pump();
    EXPECT_EQ(windows(), "");
    obey(); // the thread comes out of the driver, into what it was called from
    driver().settle();
    EXPECT_EQ(lastWritten(), (Words{0, 1, 0, 1}));
}

TEST(ScreenSaver, IsDeletedWhenItsMonitorHasEndedByAFailure) {
    panel::setUserActive(false);
    ScreenSaver* screenSaver = ScreenSaver::create(GetModuleHandleW(nullptr), CLASS_NAME);
    screenSaver->activate();
    refuse("write");
    panel::setUserActive(true);
    driver().settle();
    startTrace();
    EXPECT_EQ(failure([&] { ScreenSaver::remove(screenSaver); }), L"backlight: Cannot update driver settings");
    EXPECT_EQ(trace({"DeviceIoControl"}).size(), 1U);
    EXPECT_EQ(trace({"CloseHandle"}).size(), 4U) << "the thread, its two events, the driver";
    EXPECT_EQ(GetTickCount(), 0U);
}
