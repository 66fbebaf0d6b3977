#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/FaultOptions.h"
#include "platform/tool/Table.h"

#include "platform/panel/Functions.h"

#include <cstdio>
#include <memory>

namespace tool {

namespace {

using panel::Fault;
using panel::FaultAction;
using panel::Json;

std::string action(const Fault& fault) {
    if (fault.action == FaultAction::cut)
        return "power cut" + (fault.sectors ? ", " + std::to_string(fault.sectors) + " sectors stay" : "");
    if (fault.action == FaultAction::hold)
        return "holds";
    return fault.answer ? "answers " + std::to_string(*fault.answer) : "fails";
}

std::string which(const Fault& fault) {
    return std::to_string(fault.call) + (fault.ever ? " and all after it" : "");
}

std::string anyOr(std::uint32_t number) {
    return number ? std::to_string(number) : "any";
}

void addAdd(CLI::App& faults, Tool& tool) {
    auto* command = faults.add_subcommand("add", "Make a call of a platform function fail without any effect");
    auto options = std::make_shared<FaultOptions>();
    options->addTo(*command);
    command->callback([options, &tool] {
        const Fault fault = options->fault();
        panel::Driver(tool.panel()).addFault(fault);
    });
}

void list(panel::Driver& driver, bool json) {
    if (json) {
        Json answer = Json::array();
        for (const Fault& fault : driver.faults()) {
            answer.push_back({{"function", fault.function},
                              {"program", fault.program},
                              {"start", fault.start},
                              {"thread", fault.thread},
                              {"call", fault.call},
                              {"fromThenOn", fault.ever},
                              {"cut", fault.action == FaultAction::cut},
                              {"hold", fault.action == FaultAction::hold},
                              {"sectors", fault.sectors},
                              {"hits", fault.hits}});
            if (fault.answer)
                answer.back()["answers"] = *fault.answer;
        }
        printJson(answer);
        return;
    }
    Table table({"FUNCTION", "CALL", "PROGRAM", "START", "THREAD", "ACTION", "HITS"});
    for (const Fault& fault : driver.faults())
        table.add({fault.function, which(fault), fault.program.empty() ? "any" : fault.program, anyOr(fault.start),
                   anyOr(fault.thread), action(fault), std::to_string(fault.hits)});
    table.print();
    if (table.empty())
        std::puts("There are no faults.");
}

void listFunctions(bool json) {
    Json answer = Json::array();
    Table table({"FUNCTION", "ANSWERS", "LAST ERROR"});
    for (std::size_t index = 0; index < panel::functionCount; ++index) {
        const panel::FunctionFacts& facts = panel::facts(static_cast<panel::Function>(index));
        const std::string name(facts.name);
        answer.push_back({{"function", name}, {"canFail", facts.canFail}});
        if (facts.canFail) {
            answer.back()["answers"] = facts.failure;
            answer.back()["lastError"] = facts.lastError;
            table.add({name, std::to_string(facts.failure), std::to_string(facts.lastError)});
        } else {
            table.add({name, "cannot fail"});
        }
    }
    if (json)
        printJson(answer);
    else
        table.print();
}

} // namespace

void addFaultCommands(CLI::App& app, Tool& tool) {
    auto* faults =
        app.add_subcommand("fault", "Inject faults: make platform calls fail or wait, or cut the power at a call");
    faults->require_subcommand(1);
    addAdd(*faults, tool);

    auto json = std::make_shared<bool>(false);
    auto* listing = faults->add_subcommand("list", "List the faults, and how often each was applied");
    listing->add_flag("--json", *json, "Answer in JSON");
    listing->callback([json, &tool] {
        panel::Driver driver(tool.panel());
        list(driver, *json);
    });
    faults->add_subcommand("release", "Let held calls go on, and remove the faults that hold calls")->callback([&tool] {
        panel::Driver(tool.panel()).releaseCalls();
    });
    faults->add_subcommand("clear", "Remove all faults; held calls go on")->callback([&tool] {
        panel::Driver(tool.panel()).clearFaults();
    });
    auto* functions =
        faults->add_subcommand("functions", "List the functions with their failure result and last error");
    functions->add_flag("--json", *json, "Answer in JSON");
    functions->callback([json] { listFunctions(*json); });
}

} // namespace tool
