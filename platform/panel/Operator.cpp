#include "platform/panel/Operator.h"

#include "platform/panel/Call.h"
#include "platform/panel/kernel/Activity.h"

#include <stdexcept>

namespace panel {

void setUserActive(bool active) {
    Call call;
    if (!activity::set(call.image, active))
        throw std::runtime_error("the panel has no power manager (panel device PowerManager add, and boot)");
}

} // namespace panel
