#include "platform/tool/Units.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace tool {

namespace {

double unitOf(const std::string& unit) {
    if (unit.empty() || unit == "ms")
        return 1;
    if (unit == "s")
        return 1000;
    if (unit == "min")
        return 60000;
    if (unit == "h")
        return 3600000;
    return 0;
}

} // namespace

std::uint64_t parseDuration(const std::string& text) {
    constexpr double longest = 1e15;
    const std::size_t digits = std::min(text.find_first_not_of("0123456789."), text.size());
    double value = -1;
    try {
        std::size_t used = 0;
        value = std::stod(text.substr(0, digits), &used);
        value = used == digits ? value * unitOf(text.substr(digits)) : -1;
    } catch (const std::exception&) {
        value = -1;
    }
    const bool unitKnown = unitOf(text.substr(digits)) > 0;
    if (!unitKnown || value < 0 || value > longest)
        throw Misuse("not a duration: \"" + text + "\" (such as 1500, 1500ms, 5s, 2min, 1h)");
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
    if (const std::uint64_t hours = milliseconds / 3600000)
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

} // namespace tool
