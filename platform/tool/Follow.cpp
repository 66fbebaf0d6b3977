#include "platform/tool/Follow.h"

#include <chrono>
#include <thread>

namespace tool {

void followWhileOn(const panel::Panel& panel, const std::function<void()>& look) {
    constexpr std::chrono::milliseconds pause(50);
    for (bool on = true; on;) {
        on = panel.isOn(); // before the look, so that the last look sees all lines
        look();
        if (on)
            std::this_thread::sleep_for(pause);
    }
}

} // namespace tool
