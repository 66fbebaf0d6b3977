#include "platform/tool/TraceFilter.h"

#include "platform/panel/Text.h"
#include "platform/tool/TraceLine.h"

#include <algorithm>

namespace tool {

namespace {

bool isOneOf(const std::vector<std::string>& names, std::string_view name) {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& wanted) { return panel::equalCaseBlind(wanted, name); });
}

} // namespace

bool TraceFilter::admits(std::string_view line) const {
    const std::optional<TraceLine> call = TraceLine::parse(line);
    if (!call)
        return false;
    return (functions.empty() || isOneOf(functions, call->function)) &&
           (processes.empty() || isOneOf(processes, call->process) || isOneOf(processes, call->program)) &&
           (thread == 0 || call->thread == thread) && ended.contains(static_cast<std::int64_t>(call->time)) &&
           (!failuresOnly || call->failed);
}

} // namespace tool
