#include "platform/tool/Period.h"

#include "platform/panel/Driver.h"
#include "platform/tool/Units.h"

#include <stdexcept>

namespace tool {

namespace {

std::int64_t bootDate(const panel::Panel& panel) {
    if (const auto date = panel.bootDate())
        return *date;
    throw std::runtime_error("the date of the last boot is not known: the panel was not booted since it was made");
}

bool isSinceBoot(const std::string& text) {
    return text.starts_with('+');
}

std::int64_t durationIn(const std::string& text) {
    return static_cast<std::int64_t>(parseDuration(text));
}

std::int64_t dateOf(const panel::Panel& panel, const std::string& text) {
    if (isSinceBoot(text))
        return durationIn(text.substr(1)) + bootDate(panel);
    if (text.find('-') != std::string::npos)
        return parseDate(text);
    const std::int64_t span = durationIn(text);
    return (panel.isOn() ? panel::Driver(panel).status().date : panel.options().date) - span;
}

// Works without the date of the boot if the text needs no date.
std::int64_t sinceBootOf(const panel::Panel& panel, const std::string& text) {
    return isSinceBoot(text) ? durationIn(text.substr(1)) : dateOf(panel, text) - bootDate(panel);
}

} // namespace

void Period::addTo(CLI::App& command, const std::string& what) {
    command
        .add_option("--since", since,
                    "Only " + what +
                        " from this time on: a date such as 2024-03-07T06:05:09 (UTC); 5m: five minutes before now; "
                        "+5m: five minutes after boot")
        ->type_name("TIME");
    command.add_option("--before", before, "Only " + what + " before this time, which is written like that of --since")
        ->type_name("TIME");
}

Period::Span Period::dates(const panel::Panel& panel) const {
    Span span;
    if (!since.empty())
        span.begin = dateOf(panel, since);
    if (!before.empty())
        span.end = dateOf(panel, before);
    return span;
}

Period::Span Period::sinceBoot(const panel::Panel& panel) const {
    Span span;
    if (!since.empty())
        span.begin = sinceBootOf(panel, since);
    if (!before.empty())
        span.end = sinceBootOf(panel, before);
    return span;
}

} // namespace tool
