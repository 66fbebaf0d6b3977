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

enum class Origin { epoch, now, boot };

struct Moment {
    std::int64_t milliseconds; // after the origin, or before now
    Origin origin;
};

Moment parse(const std::string& text) {
    try {
        if (text.starts_with('+'))
            return {static_cast<std::int64_t>(parseDuration(text.substr(1))), Origin::boot};
        if (text.find('-') != std::string::npos)
            return {parseDate(text), Origin::epoch};
        return {static_cast<std::int64_t>(parseDuration(text)), Origin::now};
    } catch (const Misuse&) {
        throw Misuse("not a time: \"" + text + "\" (such as 2024-03-07T06:05:09, 5m before now, +5m after boot)");
    }
}

std::int64_t dateOf(const panel::Panel& panel, const Moment& moment) {
    if (moment.origin == Origin::epoch)
        return moment.milliseconds;
    if (moment.origin == Origin::boot)
        return bootDate(panel) + moment.milliseconds;
    return (panel.isOn() ? panel::Driver(panel).status().date : panel.options().date) - moment.milliseconds;
}

// Needs the date of the boot only for a time that does not begin with it.
std::int64_t sinceBootOf(const panel::Panel& panel, const Moment& moment) {
    return moment.origin == Origin::boot ? moment.milliseconds : dateOf(panel, moment) - bootDate(panel);
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
        span.begin = dateOf(panel, parse(since));
    if (!before.empty())
        span.end = dateOf(panel, parse(before));
    return span;
}

Period::Span Period::sinceBoot(const panel::Panel& panel) const {
    Span span;
    if (!since.empty())
        span.begin = sinceBootOf(panel, parse(since));
    if (!before.empty())
        span.end = sinceBootOf(panel, parse(before));
    return span;
}

} // namespace tool
