#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

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
        return "power cut";
    return fault.answer ? "answers " + std::to_string(*fault.answer) : "fails";
}

std::string which(const Fault& fault) {
    return std::to_string(fault.call) + (fault.ever ? " and all after it" : "");
}

std::string anyOr(std::uint32_t number) {
    return number ? std::to_string(number) : "any";
}

void addAdd(CLI::App& faults, Tool& tool) {
    auto* command = faults.add_subcommand("add", "Let a call of a platform function fail, before it has any effect");
    struct Options {
        Fault fault;
        bool cut = false;
    };
    auto options = std::make_shared<Options>();
    Fault& fault = options->fault;
    command->add_option("FUNCTION", fault.function, "Its name, in exact case")->required();
    command->add_option("--program", fault.program, "Only in this program: its file name; default: any")
        ->type_name("NAME");
    command->add_option("--start", fault.start, "Only in this start of the program since boot; default: any")
        ->type_name("N");
    command->add_option("--thread", fault.thread, "Only in the thread of this number; default: any")->type_name("N");
    command->add_option("--call", fault.call, "Which call of the function in its thread")
        ->type_name("K")
        ->capture_default_str();
    command->add_flag("--from-then-on", fault.ever, "That call and all after it");
    command->add_option("--answer", fault.answer, "What it answers; default: what a failure answers on a panel")
        ->type_name("N");
    command->add_flag("--cut", options->cut, "The panel's power is cut there, instead");
    command->callback([options, &tool] {
        const auto function = panel::functionNamed(options->fault.function);
        if (!function)
            throw Misuse("the platform has no function \"" + options->fault.function +
                         "\" (panel fault functions lists them, in exact case)");
        if (!options->cut && !panel::facts(*function).canFail)
            throw Misuse(options->fault.function + " cannot fail");
        if (options->fault.call == 0)
            throw Misuse("calls are counted from 1");
        options->fault.action = options->cut ? FaultAction::cut : FaultAction::fail;
        panel::Driver(tool.panel()).addFault(options->fault);
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
        std::puts("No fault is asked for.");
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
    auto* faults = app.add_subcommand("fault", "Let platform calls of programs fail, or cut the power at one");
    faults->require_subcommand(1);
    addAdd(*faults, tool);

    auto json = std::make_shared<bool>(false);
    auto* listing = faults->add_subcommand("list", "List the faults that are asked for, and how often each has hit");
    listing->add_flag("--json", *json, "Answer in JSON");
    listing->callback([json, &tool] {
        panel::Driver driver(tool.panel());
        list(driver, *json);
    });
    faults->add_subcommand("clear", "Ask for no fault any more")->callback([&tool] {
        panel::Driver(tool.panel()).clearFaults();
    });
    auto* functions = faults->add_subcommand("functions", "List what can fail, with the answer and the last error");
    functions->add_flag("--json", *json, "Answer in JSON");
    functions->callback([json] { listFunctions(*json); });
}

} // namespace tool
