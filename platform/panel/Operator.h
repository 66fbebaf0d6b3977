// The person in front of a panel that is on. For drivers (Driver.h); any thread. All failures are std::runtime_error
// with a text for people.
#pragma once

namespace panel {

// What the power manager reports from now on. A panel may lack it: a failure.
void setUserActive(bool active);

} // namespace panel
