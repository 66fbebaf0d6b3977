#include "platform/tool/TraceFilter.h"

#include "platform/panel/Text.h"

#include <algorithm>

namespace tool {

namespace {

std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return word;
}

bool isOneOf(const std::vector<std::string>& names, std::string_view name) {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& wanted) { return panel::equalCaseBlind(wanted, name); });
}

} // namespace

bool TraceFilter::admits(std::string_view line) const {
    // "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void after 1000 ms"; the program's name may contain spaces.
    std::string_view rest = line;
    takeWord(rest);
    rest.remove_prefix(std::min<std::size_t>(1, rest.size()));
    const std::size_t hash = rest.find('#');
    if (hash == std::string_view::npos)
        return false;
    const std::string_view process = rest.substr(0, rest.find(' ', hash));
    rest.remove_prefix(process.size());
    const std::string_view threadName = takeWord(rest);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const std::string_view function = rest.substr(0, rest.find('['));
    const std::string_view result = rest.substr(std::min(rest.rfind(") = "), rest.size()));
    return (functions.empty() || isOneOf(functions, function)) &&
           (processes.empty() || isOneOf(processes, process) ||
            isOneOf(processes, process.substr(0, process.find('#')))) &&
           (thread == 0 || threadName == "t" + std::to_string(thread)) &&
           (!failuresOnly || result.find(" error ") != std::string_view::npos ||
            result.find(" fault") != std::string_view::npos);
}

} // namespace tool
