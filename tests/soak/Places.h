// The calls at which a fault may hit.
#pragma once

#include "tests/support/ScenarioPanel.h"

#include <set>
#include <tuple>

using Place = std::tuple<std::uint32_t, std::string, std::uint32_t>; // thread, function, call

// The calls of this start of the helper in the trace that can fail.
std::set<Place> placesOf(const ScenarioPanel& panel, std::uint32_t start);
// What the threads that the helper has now have called since the trace had this size, with the numbers of the next
// calls.
std::set<Place> nextPlaces(ScenarioPanel& panel, const panel::ProcessStatus& helper, std::streamoff since);

std::string textOf(const panel::Fault& fault);
