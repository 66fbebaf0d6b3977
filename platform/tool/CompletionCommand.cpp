#include "platform/panel/kernel/Storage.h"
#include "platform/tool/Commands.h"
#include "platform/tool/FaultOptions.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace tool {

namespace {

// Splits the beginning of a command line as a shell does. The last word may be empty: it is the one to complete.
std::vector<std::string> shellWords(std::string_view line) {
    std::vector<std::string> words{""};
    char quote = 0;
    bool some = false; // the last word has begun
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (!quote && (line[at] == ' ' || line[at] == '\t')) {
            if (some)
                words.emplace_back();
            some = false;
            continue;
        }
        some = true;
        if (line[at] == quote)
            quote = 0;
        else if (!quote && (line[at] == '"' || line[at] == '\''))
            quote = line[at];
        else if (line[at] == '\\' && quote != '\'' && at + 1 < line.size())
            words.back() += line[++at];
        else
            words.back() += line[at];
    }
    return words;
}

// Returns the words that can be the value of an option or argument, as far as they are known.
std::vector<std::string> valuesOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::string what = option.get_positional() ? option.get_name() : type;
    std::vector<std::string> values;
    if (what.starts_with("DEVICE"))
        for (const panel::DeviceFacts& device : panel::knownDevices())
            values.emplace_back(device.name);
    else if (what == "POLICY")
        values.assign(std::begin(panel::storageNames), std::end(panel::storageNames));
    else if (what == "TYPE")
        for (std::uint32_t number = 0; number <= panel::registry::typeTexts; ++number)
            values.push_back(panel::registry::typeName(number));
    else if (what == "FUNCTION" || option.check_lname("function"))
        values = functionNames();
    const std::size_t open = type.find('{'); // the choices of CLI::IsMember: "TEXT:{show,refuse}"
    for (std::size_t at = open; at != std::string::npos && type[at] != '}';) {
        const std::size_t end = type.find_first_of(",}", at + 1);
        if (end == std::string::npos)
            break;
        values.push_back(type.substr(at + 1, end - at - 1));
        at = end;
    }
    return values;
}

// Returns the words that can stand at the end of a command line.
std::vector<std::string> candidates(const CLI::App& app, const std::vector<std::string>& words) {
    std::vector<const CLI::App*> commands{&app};
    const CLI::Option* awaiting = nullptr; // an option whose value comes next
    std::size_t positionals = 0;
    const auto optionNamed = [&](const std::string& name) -> const CLI::Option* {
        for (const CLI::App* command : commands)
            for (const CLI::Option* option : command->get_options({}))
                if (option->nonpositional() && option->check_name(name))
                    return option;
        return nullptr;
    };
    for (std::size_t index = 1; index + 1 < words.size(); ++index) {
        const std::string& word = words[index];
        const auto below = commands.back()->get_subcommands({});
        const auto named = std::find_if(below.begin(), below.end(), [&](auto* each) { return each->check_name(word); });
        if (awaiting)
            awaiting = nullptr;
        else if (const CLI::Option* option = optionNamed(word))
            awaiting = option->get_items_expected_min() > 0 ? option : nullptr;
        else if (named != below.end())
            commands.push_back(*named);
        else
            ++positionals;
    }
    if (awaiting)
        return valuesOf(*awaiting);
    std::vector<std::string> known;
    for (const CLI::App* below : commands.back()->get_subcommands({}))
        known.push_back(below->get_name());
    for (const CLI::Option* option : commands.back()->get_options({}))
        if (option->get_positional() && positionals-- == 0)
            std::ranges::move(valuesOf(*option), std::back_inserter(known));
    if (words.back().starts_with('-')) // else Tab would list them all
        for (const CLI::App* command : commands)
            for (const CLI::Option* option : command->get_options({}))
                for (const std::string& name : option->get_lnames())
                    known.push_back("--" + name);
    return known;
}

void complete(const CLI::App& app) {
    const char* const line = std::getenv("COMP_LINE"); // bash sets both
    const char* const point = std::getenv("COMP_POINT");
    if (!line) {
        const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
        std::printf("complete -o default -C '\"%s\" completion' panel\n", self.c_str());
        return;
    }
    const std::size_t end = point ? std::strtoul(point, nullptr, 10) : std::string::npos;
    const std::vector<std::string> words = shellWords(std::string_view(line).substr(0, end));
    for (const std::string& candidate : candidates(app, words))
        if (candidate.starts_with(words.back()))
            std::puts(candidate.c_str());
}

} // namespace

void addCompletionCommand(CLI::App& app) {
    auto* command = app.add_subcommand(
        "completion", "Print the line for bash that completes panel commands: eval \"$(panel completion)\"");
    command->prefix_command()->fallthrough(false); // bash adds words, which are not for this program
    command->callback([&app] { complete(app); });
}

} // namespace tool
