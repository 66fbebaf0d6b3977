#include "platform/panel/kernel/Power.h"

#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"

#include <unistd.h>

namespace panel::power {

void note(const std::string& directory, const std::string& why) {
    const std::string file = directory + "/run/end";
    unlink(file.c_str());
    host::appendToFile(file, why);
}

void off(Image& image, const std::string& directory, const std::string& why, const std::function<void()>& settleFiles) {
    processes::noticeDead(image);
    settleFiles();
    note(directory, why);
    image.clock.endDate = clock::date(image); // afterwards time may go on
    image.on = 0;
    processes::killAll(image);
    scheduler::step(image);
}

} // namespace panel::power
