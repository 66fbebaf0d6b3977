#include "modules/screensaver/ScreenSaver.h"

#include "OrvaUtils/Teardown.h"

#include <limits>

ScreenSaver* ScreenSaver::create(HINSTANCE instance, const std::wstring& className) {
    auto* screenSaver = new ScreenSaver(instance, className);
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
    screenSaver->blackScreen.destroy();
    steps.run([=] { screenSaver->monitor.stop(); });
    screenSaver->monitor.removeObserver(screenSaver);
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
    useBlackScreen = fraction <= std::numeric_limits<float>::epsilon();
    backLight->setLevel(fraction);
}

void ScreenSaver::activate() {
    if (active) {
        return;
    }
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
    blackScreen.hide(); // deliberately also when it was not shown
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
