#include "modules/screensaver/ScreenSaver.h"

#include "OrvaUtils/Teardown.h"

#include <limits>
#include <utility>
#include <vector>

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

ScreenSaver::~ScreenSaver() noexcept(false) {
    OrvaUtils::Teardown steps;
    steps.run([this] { end(); });
    monitor.removeObserver(this);
    steps.finish();
}

void ScreenSaver::remove(ScreenSaver* screenSaver) {
    // Never destroyed, so that what it holds is not taken for a leak.
    static auto* const stuck = new std::vector<ScreenSaver*>;
    OrvaUtils::Teardown steps;
    steps.run([=] { screenSaver->end(); });
    if (screenSaver->monitor.isStuck()) {
        steps.run([=] { screenSaver->monitor.stop(); });
    }
    if (screenSaver->monitor.isStuck()) {
        stuck->push_back(screenSaver);
    } else {
        steps.run([=] { delete screenSaver; });
    }
    steps.finish();
}

void ScreenSaver::end() {
    if (std::exchange(ended, true)) {
        return;
    }
    OrvaUtils::Teardown steps;
    steps.run([this] { deactivate(); });
    blackScreen.destroy();
    steps.run([this] { monitor.stop(); });
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
