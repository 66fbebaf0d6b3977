// A trace as the steps that matter: what a helper made, opened, started, told, waited for and closed.
#pragma once

#include "tests/support/ScenarioPanel.h"

// Of one thread of the first helper, oldest first: "make EMMC stop", "start EMMC thread", "set EMMC stop", "join
// EMMC thread", "close BKL1:", "log Helper terminated". A device is opened with its access, share mode, disposition and
// flags, a window is made with its extended style and style. The events are known by the order of the attempts to make
// them, so all attempts before must have been made, refused or not. What is read or written as a whole is one step;
// what looks at files and registry is none; a step that the platform refused ends in " failed", a wait that took too
// long in " in vain".
Lines milestones(const ScenarioPanel& panel, std::uint32_t thread);
