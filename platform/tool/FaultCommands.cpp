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
    struct Options {
        Fault fault;
        bool cut = false;
        bool hold = false;
    };
    auto options = std::make_shared<Options>();
    Fault& fault = options->fault;
    command->add_option("FUNCTION", fault.function, "Name of the function, case-sensitive")->required();
    command->add_option("--program", fault.program, "File name of the program; default: every program")
        ->type_name("NAME");
    command->add_option("--start", fault.start, "Start number of the program since boot; default: every start")
        ->type_name("N");
    command->add_option("--thread", fault.thread, "Thread number in the process; default: every thread")
        ->type_name("N");
    command->add_option("--call", fault.call, "Number of the call in its thread")
        ->type_name("K")
        ->capture_default_str();
    command->add_flag("--from-then-on", fault.ever, "Apply the fault to all later calls, too");
    command->add_option("--answer", fault.answer, "Result of the call; default: the function's usual failure result")
        ->type_name("N");
    auto* cut = command->add_flag("--cut", options->cut, "Cut the panel's power at the call instead");
    command
        ->add_option("--sectors", fault.sectors,
                     "With --cut and the storage policy \"torn\": how many uncommitted sectors of each file stay")
        ->type_name("K")
        ->needs(cut);
    command->add_flag("--hold", options->hold, "Let the call wait until fault release or fault clear")->excludes(cut);
    command->callback([options, &tool] {
        const auto function = panel::functionNamed(options->fault.function);
        if (!function)
            throw Misuse("the platform has no function \"" + options->fault.function +
                         "\" (panel fault functions lists them, in exact case)");
        if (!options->cut && !options->hold && !panel::facts(*function).canFail)
            throw Misuse(options->fault.function + " cannot fail");
        if (options->fault.call == 0)
            throw Misuse("calls are counted from 1");
        options->fault.action = options->cut ? FaultAction::cut : options->hold ? FaultAction::hold : FaultAction::fail;
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
