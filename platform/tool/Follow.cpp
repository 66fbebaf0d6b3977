#include "platform/tool/Follow.h"

#include <chrono>
#include <thread>

namespace tool {

void followWhileOn(const panel::Panel& panel, const std::function<void()>& look) {
    constexpr std::chrono::milliseconds pause(50);
    for (bool on = true; on;) {
        on = panel.isOn();
        look();
        if (on)
            std::this_thread::sleep_for(pause);
    }
}

} // namespace tool
