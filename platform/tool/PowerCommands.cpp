#include "platform/panel/Hex.h"
#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/FaultOptions.h"
#include "platform/tool/Progress.h"
#include "platform/tool/Report.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include "platform/panel/kernel/Storage.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

using panel::Json;

constexpr const char* storageHelp = R"(
kept    Every completed WriteFile stays.
closed  What was written through a handle stays once the handle is closed. Until then a power cut takes it, with
        the length that it gave the file. The end of a program closes its handles.
torn    Like closed, but of what would be lost the first K sectors of each file stay: aligned blocks of 512 bytes,
        from the beginning of the file. "panel cut --sectors K" and "panel fault add FUNCTION --cut --sectors K" say
        how many. A cut at a WriteFile falls inside the call: its data counts as written.

With every policy these changes stay at once, as a whole and in their order: creating, emptying, renaming and
deleting a file, its attributes, folders, and a copy by CopyFileW. A shutdown by "panel off" keeps everything. Files
on a plugged disk follow no policy: they keep every completed WriteFile. Setting a policy, also while the panel is
on, keeps what was written before.
)";

struct CreateOptions {
    std::string directory;
    std::string from; // a report
    std::string screen = "800x480";
    std::string date;
    panel::PanelOptions facts;
    std::string guid;
    std::string storage = panel::storageNames[0];
    bool json = false;
};

void reportNew(const panel::Panel& made, bool json) {
    const panel::PanelOptions facts = made.options();
    if (json)
        return printJson({{"directory", made.directory().string()},
                          {"screen", {{"width", facts.screenWidth}, {"height", facts.screenHeight}}},
                          {"date", formatDate(facts.date)}});
    std::printf("Made a panel in %s: screen %u x %u, %s\n", made.directory().c_str(), facts.screenWidth,
                facts.screenHeight, formatDate(facts.date).c_str());
}

void create(const CreateOptions& options) {
    if (options.directory.empty())
        throw Misuse("\"\" is not a directory for a panel");
    if (!options.from.empty())
        return reportNew(panelFromReport(options.from, options.directory), options.json);
    panel::PanelOptions facts = options.facts;
    int used = 0;
    if (std::sscanf(options.screen.c_str(), "%ux%u%n", &facts.screenWidth, &facts.screenHeight, &used) != 2 ||
        static_cast<std::size_t>(used) != options.screen.size() || facts.screenWidth - 1 >= panel::maxScreen ||
        facts.screenHeight - 1 >= panel::maxScreen)
        throw Misuse("not a screen size: \"" + options.screen + "\" (such as 800x480)");
    if (!options.date.empty())
        facts.date = parseDate(options.date);
    if (!options.guid.empty())
        facts.guid = orMisuse([&] { return panel::parseHex(options.guid); });
    if (facts.guid.size() != 16)
        throw Misuse("a GUID has 16 bytes: \"" + options.guid + "\" is none");
    facts.storage = orMisuse([&] { return panel::storageNamed(options.storage); });
    for (const std::string& device : facts.without)
        orMisuse([&] { return panel::Devices::facts(device).name; });
    reportNew(panel::Panel::create(options.directory, facts), options.json);
}

void addCreate(CLI::App& app) {
    auto* command = app.add_subcommand("create", "Create a panel in a new directory; it is off");
    auto options = std::make_shared<CreateOptions>();
    command->add_option("DIR", options->directory, "Directory of the panel; it must be empty or not exist")->required();
    command->add_option("--screen", options->screen, "Screen size in pixels")->type_name("WxH")->capture_default_str();
    command->add_option("--date", options->date, "Date of the calendar clock (UTC); default: today")->type_name("DATE");
    command->add_option("--version", options->facts.version, "Platform version")
        ->type_name("TEXT")
        ->capture_default_str();
    command->add_option("--name", options->facts.name, "Device name")->type_name("TEXT")->capture_default_str();
    command
        ->add_option("--without", options->facts.without,
                     "A device that the panel lacks, such as BKL1 (panel device lists the devices)")
        ->type_name("DEVICE");
    command->add_option("--model", options->facts.model, "Model code (tag 18)")->type_name("N")->capture_default_str();
    command->add_option("--guid", options->guid, "GUID (tag 48): 16 bytes in hexadecimal")->type_name("BYTES");
    command->add_option("--storage", options->storage, "Storage policy: kept, closed or torn (panel storage --help)")
        ->type_name("POLICY")
        ->capture_default_str();
    command
        ->add_option("--from", options->from,
                     "Make the panel of this report (panel report), as it was then; no other option goes with it")
        ->type_name("FILE");
    command->add_flag("--json", options->json, "Answer in JSON");
    command->footer(
        "\nThe registry of somebody else's panel can start any program on this machine, as you. Before you boot "
        "it, look at\npanel registry list \"HKLM\\init\", or use panel boot --without-init.\n");
    command->callback([options, command] {
        if (command->count("--from") && options->from.empty())
            throw Misuse("\"\" is not a report");
        for (const CLI::Option* option : command->get_options({}))
            if (!options->from.empty() && option->count() && option->nonpositional() && !option->check_lname("from") &&
                !option->check_lname("json"))
                throw Misuse("--from does not go with " + option->get_name() + ", which is for a new panel");
        create(*options);
    });
}

struct Boot {
    bool stepped = false;
    bool flowing = false;
    double factor = 1;
    std::string ticks = "0";
    bool withoutInit = false;
    bool trace = false;
    std::vector<std::string> faults;
    bool json = false;
};

void report(const std::vector<panel::InitStart>& starts, const Boot& options) {
    Json started = Json::array();
    for (const panel::InitStart& start : starts) {
        const bool failed = !start.failure.empty();
        started.push_back({{"launch", start.number}, {"name", failed ? Json(nullptr) : Json(start.process.name)}});
        if (failed)
            complain("Launch" + std::to_string(start.number) + " of the registry: " + start.failure);
        else if (!options.json)
            std::printf("Started %s, listed as Launch%u in the registry\n", start.process.name.c_str(), start.number);
    }
    if (options.json)
        printJson({{"started", started}});
}

void boot(const panel::Panel& panel, const Boot& options) {
    panel::BootOptions facts;
    facts.mode = options.stepped ? panel::ClockMode::stepped : panel::ClockMode::flowing;
    if (!(options.factor >= 0.001 && options.factor <= 100000))
        throw Misuse("the clock's factor must be between 0.001 and 100000");
    facts.factor = options.factor;
    const std::int64_t ticks = parseNumber(options.ticks);
    if (ticks < 0 || ticks > 0xFFFFFFFF)
        throw Misuse("the tick count has 32 bits: \"" + options.ticks + "\" is none");
    facts.ticks = static_cast<std::uint32_t>(ticks);
    std::vector<panel::Fault> faults; // complete before the panel boots, so that a mistyped fault boots nothing
    for (const std::string& fault : options.faults)
        faults.push_back(FaultOptions::parse(fault));
    if (faults.size() > panel::maxFaults)
        throw Misuse("the panel keeps at most " + std::to_string(panel::maxFaults) + " faults at a time");
    const bool torn = panel.options().storage == panel::StoragePolicy::torn;
    if (!torn && std::any_of(faults.begin(), faults.end(), [](const panel::Fault& fault) { return fault.sectors > 0; }))
        throw std::runtime_error(panel::storage::onlyTorn);
    panel::Panel(panel).boot(facts);
    if (!options.json)
        std::printf("The panel is %s, its time %s\n", toned("on", Tone::good).c_str(),
                    options.stepped ? "stands still until a command waits" : "flows");
    panel::Driver driver(panel, panel::Driver::command, panel::Driver::Programs::stay);
    driver.setTracing(options.trace);
    for (const panel::Fault& fault : faults)
        driver.addFault(fault);
    report(options.withoutInit ? std::vector<panel::InitStart>() : driver.startInit(), options);
}

void addBoot(CLI::App& app, Tool& tool) {
    auto* command =
        app.add_subcommand("boot", "Switch the panel on, and start the programs that the registry lists under init");
    auto options = std::make_shared<Boot>();
    auto* flowing = command->add_flag("--flowing", options->flowing, "Panel time flows like real time (default)");
    auto* stepped =
        command->add_flag("--stepped", options->stepped,
                          "Panel time stands still; it jumps from deadline to deadline while a command waits");
    auto* factor = command->add_option("--factor", options->factor, "Panel seconds per real second, with --flowing");
    stepped->excludes(flowing)->excludes(factor);
    command->add_option("--ticks", options->ticks, "Tick count at boot in ms; 0xFFFFF000 is shortly before the wrap")
        ->type_name("N")
        ->capture_default_str();
    command->add_flag("--without-init", options->withoutInit, "Start no programs");
    command->add_flag("--trace", options->trace, "Record the platform calls from the first one on");
    command
        ->add_option("--fault", options->faults,
                     "Inject a fault before the programs start; may be repeated. FAULT: a line of the trace or its "
                     "beginning, or the words of panel fault add, as one word")
        ->type_name("FAULT")
        ->allow_extra_args(false);
    command->add_flag("--json", options->json, "Answer in JSON");
    command->footer(R"(
Examples:
  panel boot --stepped --trace
  panel boot --fault "TarvexHelper.exe#1 t1 CreateFileW[3]"
  panel boot --fault "TarvexHelper.exe#1 t1 CreateFileW[3] --cut" --fault "WriteFile --call 2 --from-then-on"
)");
    command->callback([options, &tool] { boot(tool.panel(), *options); });
}

void reportOff(bool json, const char* how) {
    if (json)
        return printJson({{"on", false}});
    std::printf("The panel is %s%s\n", toned("off", Tone::bad).c_str(), how);
}

void addOff(CLI::App& app, Tool& tool) {
    auto json = std::make_shared<bool>(false);
    auto* off = app.add_subcommand("off", "Shut the panel down cleanly: end all programs, flush the registry");
    off->add_flag("--json", *json, "Answer in JSON");
    off->callback([json, &tool] {
        tool.panel().off();
        reportOff(*json, "");
    });
    auto* cut = app.add_subcommand(
        "cut", "Cut the panel's power: what its storage has not committed and unflushed registry changes are lost");
    auto sectors = std::make_shared<std::uint32_t>(0);
    cut->add_option("--sectors", *sectors,
                    "With the storage policy \"torn\": how many uncommitted sectors of each file stay")
        ->type_name("K");
    cut->add_flag("--json", *json, "Answer in JSON");
    cut->callback([sectors, json, &tool] {
        tool.panel().cut(*sectors);
        reportOff(*json, ", its power was cut");
    });
}

void addStorage(CLI::App& app, Tool& tool) {
    auto* command =
        app.add_subcommand("storage", "Show or set what a power cut leaves of the files on the panel's own storage");
    command->footer(storageHelp);
    auto policy = std::make_shared<std::string>();
    command->add_option("POLICY", *policy, "kept, closed or torn; default: show the policy");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Answer in JSON");
    command->callback([policy, json, &tool] {
        panel::Panel panel = tool.panel();
        if (!policy->empty())
            panel.setStorage(orMisuse([&] { return panel::storageNamed(*policy); }));
        const char* name = panel::storageNames[static_cast<std::size_t>(panel.options().storage)];
        if (*json)
            printJson({{"storage", name}});
        else if (policy->empty())
            std::puts(name);
    });
}

void advance(const panel::Panel& panel, std::uint64_t duration, bool json) {
    panel::Driver driver(panel);
    const bool off = waitWithProgress(
        driver, [&] { return !driver.isOn(); }, duration);
    if (off)
        throw std::runtime_error("the panel was switched off meanwhile");
    const panel::PanelStatus status = driver.status();
    if (json)
        return printJson({{"time", status.time}, {"date", formatDate(status.date)}});
    std::printf("%llu ms since boot, %s\n", static_cast<unsigned long long>(status.time),
                formatDate(status.date).c_str());
}

void addAdvance(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("advance", "Let panel time pass, and print the new time");
    auto duration = std::make_shared<std::string>();
    command
        ->add_option("DURATION", *duration,
                     "1500, 1500ms, 5s, 2min, 1h30min, 7d; 0ms lets no time pass and returns when all programs wait")
        ->required();
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Answer in JSON");
    command->callback([duration, json, &tool] { advance(tool.panel(), parseDuration(*duration), *json); });
}

} // namespace

void addPowerCommands(CLI::App& app, Tool& tool) {
    addCreate(app);
    addBoot(app, tool);
    addOff(app, tool);
    addStorage(app, tool);
    addAdvance(app, tool);
}

} // namespace tool
