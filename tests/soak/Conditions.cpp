#include "tests/soak/Conditions.h"

#include "tests/soak/Places.h"

#include <algorithm>

using panel::Behaviour;

namespace {

constexpr const char* drivers[] = {"BKL1", "BZR1", "SHC1", "tags"};

// It may cost a file its content.
bool isOfFiles(const std::string& function) {
    return function.find("File") != std::string::npos || function == "CloseHandle";
}

} // namespace

bool isWait(const panel::CallStatus& call, std::uint32_t limit) {
    return call.call.starts_with("WaitForSingleObject[") && call.call.ends_with(", " + std::to_string(limit) + ')');
}

bool Conditions::isOn() const {
    return panel.driver().isOn();
}

const panel::ProcessStatus* Conditions::helper() const {
    for (const panel::ProcessStatus& process : status.processes)
        if (process.name.starts_with("TarvexHelper.exe#"))
            return &process;
    return nullptr;
}

Behaviour::Kind Conditions::kindOf(const char* device) const {
    const panel::DeviceState state = panel.panel().devices().state(device);
    if (!state.behaviours.empty()) // also of requests that began before the device went
        return state.behaviours.begin()->second.kind;
    return state.present ? Behaviour::Kind::answer : Behaviour::Kind::refuse;
}

bool Conditions::isHindering() const {
    return kindOf("BKL1") == Behaviour::Kind::refuse || !panel.panel().devices().has("BKL1");
}

void Conditions::look() {
    status = panel.driver().status();
    const auto stands = [this](const std::function<bool(const panel::CallStatus&)>& isSo) {
        return helper() && std::any_of(helper()->calls.begin(), helper()->calls.end(), isSo);
    };
    std::vector<panel::Fault> holding;
    for (const panel::Fault& fault : panel.driver().faults()) {
        std::uint32_t& known = hits[textOf(fault)];
        if (fault.hits > 0 && fault.action == panel::FaultAction::hold) {
            holding.push_back(fault);
            hindered |= fault.hits > known; // the helper may have ended meanwhile
        } else if (fault.hits > known) {
            disturbed = true;
            mayForget |= isOfFiles(fault.function);
        }
        if (fault.hits > 0 && known == 0)
            std::printf("  hit %s\n", textOf(fault).c_str());
        known = fault.hits;
    }
    const auto isHeld = [&](const panel::CallStatus& each) {
        return std::any_of(holding.begin(), holding.end(), [&](const panel::Fault& fault) {
            return each.thread == fault.thread &&
                   each.call.starts_with(fault.function + '[' + std::to_string(fault.call) + ']');
        });
    };
    const bool blocks = std::any_of(std::begin(drivers), std::end(drivers),
                                    [this](const char* device) { return kindOf(device) == Behaviour::Kind::block; });
    const auto isStuck = [&](const panel::CallStatus& each) {
        return isHeld(each) || (blocks && (each.call.starts_with("DeviceIoControl[") || each.call.starts_with("TAG_")));
    };
    holds = stands(isHeld);
    held |= holds;
    const bool stuck = stands(isStuck);
    blocked = stuck && helper()->calls[0].thread == 1 &&
              (isStuck(helper()->calls[0]) || !helper()->calls[0].call.starts_with("GetMessageW["));
    hindered |= stuck || isHindering();
    tampered |= disturbed;
    mayStayDim |= disturbed || hindered;
    uncounted |=
        disturbed || holds || kindOf("SHC1") == Behaviour::Kind::block || kindOf("SHC1") == Behaviour::Kind::delay;
}

void Conditions::boot() {
    ++boots;
    passing.clear();
    killed.clear();
    hits.clear();
    mayStayDim = false;
    reloads = 0;
    start();
}

void Conditions::start() {
    disturbed = hindered = told = busy = false;
    rested = 0;
}

void Conditions::askToEnd() {
    look();
    if (!told)
        toldAt = status.time;
    busy = helper() && std::any_of(helper()->calls.begin(), helper()->calls.end(), [](const auto& each) {
               return each.call.starts_with("Sleep[") || isWait(each, 0xFFFFFFFF); // for a disk, or for its program
           });
    told = true;
}

void Conditions::loseFiles() {
    tampered = mayForget = uncounted = true;
}
