#include "platform/panel/kernel/Activity.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Scheduler.h"

namespace panel::activity {

namespace {

Slot makeEvent(Image& image, const char* name, bool signalled) {
    const Slot slot = objects::make(image, ObjectType::event);
    objects::hold(image, slot); // the kernel's own reference, which is never dropped
    ObjectRecord& event = objects::at(image, slot);
    event.manualReset = 1;
    event.signalled = signalled;
    objects::setName(event, name);
    return slot;
}

void signal(Image& image, Slot event, bool on) {
    objects::at(image, event).signalled = on;
    if (on)
        scheduler::serve(image, event);
}

} // namespace

void make(Image& image) {
    image.activeEvent = makeEvent(image, "PowerManager/UserActivity_Active", true);
    image.inactiveEvent = makeEvent(image, "PowerManager/UserActivity_Inactive", false);
}

bool set(Image& image, bool active) {
    if (!image.activeEvent)
        return false;
    signal(image, active ? image.inactiveEvent : image.activeEvent, false);
    signal(image, active ? image.activeEvent : image.inactiveEvent, true);
    return true;
}

std::optional<bool> isActive(Image& image) {
    if (!image.activeEvent)
        return std::nullopt;
    return objects::at(image, image.activeEvent).signalled != 0;
}

} // namespace panel::activity
