#include "tests/soak/Places.h"

#include "platform/panel/Functions.h"

namespace {

bool canFail(const std::string& name) {
    const auto function = panel::functionNamed(name);
    return function && panel::facts(*function).canFail;
}

} // namespace

std::set<Place> placesOf(const ScenarioPanel& panel, std::uint32_t start) {
    std::set<Place> found;
    for (const TracedCall& call : panel.calls())
        if (call.process == start && canFail(call.function))
            found.emplace(call.thread, call.function, call.number);
    return found;
}

std::set<Place> nextPlaces(ScenarioPanel& panel, const panel::ProcessStatus& helper, std::streamoff since) {
    std::map<std::pair<std::uint32_t, std::string>, std::uint32_t> numbers;
    for (const TracedCall& call : tracedCalls(panel.panel().directory(), static_cast<std::uintmax_t>(since)))
        if (helper.name == call.program + '#' + std::to_string(call.process) && canFail(call.function))
            numbers[{call.thread, call.function}] = call.number + 1;
    std::set<Place> found;
    for (const panel::CallStatus& each : helper.calls) {
        const std::string standsIn = each.call.substr(0, each.call.find('['));
        for (const auto& [key, number] : numbers)
            if (key.first == each.thread) // in the call itself it stands already
                found.emplace(key.first, key.second, number + (key.second == standsIn));
    }
    return found;
}

std::string textOf(const panel::Fault& fault) {
    return fault.function + " t" + std::to_string(fault.thread) + " call " + std::to_string(fault.call);
}
