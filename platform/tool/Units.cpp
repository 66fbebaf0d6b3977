#include "platform/tool/Units.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string_view>

namespace tool {

namespace {

struct Unit {
    std::string_view name;
    double size;
};

// The largest unit first.
constexpr Unit durations[] = {{"d", 86400000}, {"h", 3600000}, {"min", 60000}, {"m", 60000},
                              {"s", 1000},     {"ms", 1},      {"", 1}};

// Returns the sum of numbers with units, each unit smaller than the one before. Returns -1 for any other text.
double sumOf(std::string_view text) {
    const std::size_t whole = text.size();
    double sum = text.empty() ? -1 : 0;
    for (double last = std::numeric_limits<double>::infinity(); !text.empty() && sum >= 0;) {
        const std::size_t digits = std::min(text.find_first_not_of("0123456789."), text.size());
        const std::size_t length = std::min(text.find_first_of("0123456789.", digits), text.size());
        const std::string_view name = text.substr(digits, length - digits);
        const auto unit = std::find_if(std::begin(durations), std::end(durations),
                                       [&](const Unit& each) { return each.name == name; });
        double number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number);
        // Only a number that stands alone has no unit: "1h30" could mean minutes or milliseconds.
        const bool known = error == std::errc() && end == text.data() + digits && unit != std::end(durations) &&
                           (!name.empty() || length == whole);
        sum = known && unit->size < last ? sum + number * unit->size : -1;
        last = known ? unit->size : 0;
        text.remove_prefix(length);
    }
    return sum;
}

} // namespace

std::uint64_t parseDuration(const std::string& text) {
    constexpr double longest = 1e15;
    const double value = sumOf(text);
    if (value < 0 || value > longest)
        throw Misuse("not a duration: \"" + text + "\" (such as 1500, 1500ms, 5s, 2min, 1h30min, 7d)");
    return static_cast<std::uint64_t>(std::llround(value));
}

std::uint32_t parseLimit(const std::string& text) {
    constexpr std::uint64_t longest = 0x7FFFFFFF;
    const std::uint64_t value = parseDuration(text);
    if (value > longest)
        throw Misuse("too long: \"" + text + "\" (at most " + std::to_string(longest) + " ms)");
    return static_cast<std::uint32_t>(value);
}

std::string formatDuration(std::uint64_t milliseconds) {
    if (milliseconds < 1000)
        return std::to_string(milliseconds) + " ms";
    std::string text;
    const auto add = [&](const std::string& number, const char* unit) {
        text += (text.empty() ? "" : " ") + number + unit;
    };
    if (const std::uint64_t days = milliseconds / 86400000)
        add(std::to_string(days), " d");
    if (const std::uint64_t hours = milliseconds / 3600000 % 24)
        add(std::to_string(hours), " h");
    if (const std::uint64_t minutes = milliseconds / 60000 % 60)
        add(std::to_string(minutes), " min");
    std::string seconds = std::to_string(milliseconds / 1000 % 60);
    if (const std::uint64_t rest = milliseconds % 1000) {
        const std::string digits = std::to_string(rest);
        seconds += '.' + std::string(3 - digits.size(), '0') + digits;
        seconds.erase(seconds.find_last_not_of('0') + 1);
    }
    if (seconds != "0")
        add(seconds, " s");
    return text;
}

std::int64_t parseDate(const std::string& text) {
    std::tm date{};
    int used = 0;
    int fields = std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &date.tm_year, &date.tm_mon, &date.tm_mday, &used);
    bool known = fields == 3;
    std::string rest = known ? text.substr(static_cast<std::size_t>(used)) : "";
    if (!rest.empty() && rest.back() == 'Z')
        rest.pop_back();
    if (known && !rest.empty()) {
        used = 0;
        fields = std::sscanf(rest.c_str(), "%*1[T ]%2d:%2d:%2d%n", &date.tm_hour, &date.tm_min, &date.tm_sec, &used);
        known = fields == 3 && static_cast<std::size_t>(used) == rest.size();
    }
    const std::tm asked = date;
    date.tm_year -= 1900;
    date.tm_mon -= 1;
    const std::time_t seconds = known ? timegm(&date) : -1;
    // timegm turns February 30 into March 1, so the result is compared with the input
    if (seconds < 0 || date.tm_mday != asked.tm_mday || date.tm_mon + 1 != asked.tm_mon ||
        date.tm_hour != asked.tm_hour || date.tm_min != asked.tm_min || date.tm_sec != asked.tm_sec)
        throw Misuse("not a date: \"" + text + "\" (such as 2024-03-07 or 2024-03-07T06:05:09, UTC)");
    return static_cast<std::int64_t>(seconds) * 1000;
}

std::string formatDate(std::int64_t milliseconds) {
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm date{};
    gmtime_r(&seconds, &date);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &date)};
}

std::int64_t parseNumber(const std::string& text) {
    try {
        std::size_t used = 0;
        const std::int64_t value = std::stoll(text, &used, 0);
        if (used == text.size())
            return value;
    } catch (const std::exception&) { // the exception below reports it
    }
    throw Misuse("not a number: \"" + text + "\" (such as 3, -1, 0x10)");
}

std::uint32_t parseValue(const std::string& text) {
    const std::int64_t value = parseNumber(text);
    if (value < 0 || value > UINT32_MAX)
        throw Misuse("not a 32-bit value: " + text);
    return static_cast<std::uint32_t>(value);
}

} // namespace tool
