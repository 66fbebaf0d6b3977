#include "platform/tool/FaultOptions.h"

#include "platform/panel/DidYouMean.h"
#include "platform/panel/Functions.h"
#include "platform/tool/TraceLine.h"
#include "platform/tool/Units.h"

namespace tool {

std::vector<std::string> functionNames() {
    std::vector<std::string> names;
    for (std::size_t index = 0; index < panel::functionCount; ++index)
        names.emplace_back(panel::facts(static_cast<panel::Function>(index)).name);
    return names;
}

namespace {

// Returns the options that stand behind a line of the trace or behind its beginning. Throws Misuse for any other text.
std::string_view optionsBehind(const TraceLine& line) {
    std::string_view rest = line.rest;
    if (rest.starts_with('(')) {
        rest.remove_prefix(std::min(rest.rfind(')'), rest.size()));
        rest.remove_prefix(std::min(rest.find(" --"), rest.size()));
    }
    const std::size_t begin = rest.find_first_not_of(' ');
    if (begin == std::string_view::npos)
        return {};
    if (begin == 0 || !rest.substr(begin).starts_with("--"))
        throw Misuse("not a part of a line of the trace: \"" + std::string(rest.substr(begin)) + '"');
    return rest;
}

} // namespace

void FaultOptions::addTo(CLI::App& command) {
    auto* function = command.add_option("FUNCTION", described.function, "Name of the function, case-sensitive");
    auto* program =
        command.add_option("--program", described.program, "File name of the program; default: every program")
            ->type_name("NAME");
    auto* start =
        command.add_option("--start", described.start, "Start number of the program since boot; default: every start")
            ->type_name("N");
    auto* thread =
        command.add_option("--thread", described.thread, "Thread number in the process; default: every thread")
            ->type_name("N");
    auto* call = command.add_option("--call", described.call, "Number of the call in its thread")
                     ->type_name("K")
                     ->capture_default_str();
    auto* line = command.add_option("--from", from,
                                    "The call of a line of the trace, or of its beginning up to the call's number: "
                                    "\"TarvexHelper.exe#1 t1 CreateFileW[3]\"");
    line->type_name("LINE");
    for (CLI::Option* each : {function, program, start, thread, call})
        line->excludes(each);
    command.add_flag("--from-then-on", described.ever, "Apply the fault to all later calls, too");
    auto* answers = command
                        .add_option("--answer", described.answer,
                                    "Result of the call; default: the function's usual failure result")
                        ->type_name("N");
    auto* cuts = command.add_flag("--cut", cut, "Cut the panel's power at the call instead");
    command
        .add_option("--sectors", described.sectors,
                    "With --cut and the storage policy \"torn\": how many uncommitted sectors of each file stay")
        ->type_name("K")
        ->needs(cuts);
    auto* holds = command.add_flag("--hold", hold, "Let the call wait until fault release or fault clear");
    holds->excludes(cuts)->excludes(answers);
    cuts->excludes(answers);
}

panel::Fault FaultOptions::fault() const {
    panel::Fault fault = described;
    if (!from.empty()) {
        const std::optional<TraceLine> line = TraceLine::parse(from);
        if (!line)
            throw Misuse("not a line of the trace: \"" + from + "\" (such as TarvexHelper.exe#1 t1 CreateFileW[3])");
        if (!optionsBehind(*line).empty())
            throw Misuse("options stand behind the line, not in it: \"" + from + '"');
        fault.program = line->program;
        fault.start = line->start;
        fault.thread = line->thread;
        fault.function = line->function;
        fault.call = line->call;
    }
    if (fault.function.empty())
        throw Misuse("which call shall fail? Name its FUNCTION, or a line of the trace with --from");
    const auto function = panel::functionNamed(fault.function);
    if (!function)
        throw Misuse("the platform has no function \"" + fault.function + '"' +
                     panel::didYouMean(fault.function, functionNames()) +
                     " (panel fault functions lists them, in exact case)");
    if (!cut && !hold && !panel::facts(*function).canFail)
        throw Misuse(fault.function + " cannot fail");
    if (fault.call == 0)
        throw Misuse("calls are counted from 1");
    fault.action = cut ? panel::FaultAction::cut : hold ? panel::FaultAction::hold : panel::FaultAction::fail;
    return fault;
}

panel::Fault FaultOptions::parse(const std::string& text) {
    FaultOptions options;
    CLI::App words;
    words.set_help_flag();
    options.addTo(words);
    std::string wanted = text;
    const std::optional<TraceLine> line = TraceLine::parse(text);
    if (line && line->process.front() != '-')
        wanted = "--from \"" + text.substr(0, text.size() - line->rest.size()) + '"';
    try {
        words.parse(wanted + (wanted == text ? "" : std::string(optionsBehind(*line))));
    } catch (const CLI::ParseError& error) {
        throw Misuse("not a fault: \"" + text + "\": " + error.what() +
                     " (such as \"TarvexHelper.exe#1 t1 CreateFileW[3]\", or the words of panel fault add)");
    }
    return options.fault();
}

} // namespace tool
