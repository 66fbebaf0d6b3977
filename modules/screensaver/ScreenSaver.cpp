#include "modules/screensaver/ScreenSaver.h"

#include "OrvaUtils/Teardown.h"

#include <limits>

ScreenSaver* ScreenSaver::create(HINSTANCE instance, const std::wstring& className) {
    auto* screenSaver = new ScreenSaver(instance, className);
    // The observer must be registered before the thread runs, or it could miss an event.
    screenSaver->monitor.addObserver(screenSaver);
    screenSaver->monitor.start();
    return screenSaver;
}

ScreenSaver::ScreenSaver(HINSTANCE instance, const std::wstring& className)
    : blackScreen(instance, className), backLight(std::make_unique<ScreenBackLight>()) {
    blackScreen.create();
}

void ScreenSaver::remove(ScreenSaver* screenSaver) {
    OrvaUtils::Teardown steps;
    steps.run([=] { screenSaver->deactivate(); });
    // The window is destroyed even if the screen could not be restored.
    screenSaver->blackScreen.destroy();
    steps.run([=] { screenSaver->monitor.stop(); });
    screenSaver->monitor.removeObserver(screenSaver);
    // The monitor's thread uses the object, so the object may only be deleted after the thread has ended.
    if (screenSaver->monitor.hasEnded()) {
        delete screenSaver;
    } else {
        keepUntilProcessEnds(screenSaver);
    }
    steps.finish();
}

void ScreenSaver::setTimeout(std::uint32_t milliseconds) {
    monitor.setTimeout(milliseconds);
}

void ScreenSaver::setLevel(float fraction) {
    // Only level 0 gives a fraction this small: level 1 is 1/256.
    useBlackScreen = fraction <= std::numeric_limits<float>::epsilon();
    backLight->setLevel(fraction);
}

void ScreenSaver::activate() {
    if (active) {
        return;
    }
    // The window is shown before the driver is asked. If the driver fails, the window stays and `active` stays false.
    if (useBlackScreen) {
        blackScreen.show();
    }
    backLight->dim();
    active = true;
}

void ScreenSaver::deactivate() {
    if (!active) {
        return;
    }
    // The window is deliberately hidden even if it was not shown.
    blackScreen.hide();
    backLight->restore();
    active = false;
}

void ScreenSaver::notify(const UserActivityEvent& event) {
    if (event == UserActivityEvent::Inactive) {
        activate();
    } else if (event == UserActivityEvent::Active) {
        deactivate();
    }
}
