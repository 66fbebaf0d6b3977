#include "platform/tool/Period.h"

#include "platform/tool/Units.h"

#include <stdexcept>

namespace tool {

namespace {

std::int64_t bootDate(const panel::Panel& panel) {
    if (const auto date = panel.bootDate())
        return *date;
    throw std::runtime_error(
        "the date of the last boot is not known (a new or copied panel, or its kernel file is gone)");
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
    return panel.date() - moment.milliseconds;
}

// Needs the date of the boot only for a time that does not begin with it.
std::int64_t sinceBootOf(const panel::Panel& panel, const Moment& moment) {
    return moment.origin == Origin::boot ? moment.milliseconds : dateOf(panel, moment) - bootDate(panel);
}

} // namespace

void Period::addTo(CLI::App& command, const std::string& what) {
    const auto given = [](const std::string& time) { return time.empty() ? "not a time: \"\"" : std::string(); };
    command
        .add_option("--since", since,
                    "Only " + what +
                        " from this time on: a date such as 2024-03-07T06:05:09 (UTC); 5m: five minutes before now; "
                        "+5m: five minutes after the last boot")
        ->check(given)
        ->type_name("TIME");
    command.add_option("--before", before, "Only " + what + " before this time, written as for --since")
        ->check(given)
        ->type_name("TIME");
}

Period::Span Period::logDates(const panel::Panel& panel) const {
    const auto dateIn = [&](const std::string& text) { return dateOf(panel, parse(text)) / 1000 * 1000; };
    Span span;
    if (!since.empty())
        span.begin = dateIn(since);
    if (!before.empty())
        span.end = dateIn(before);
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
