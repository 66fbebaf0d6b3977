#include "platform/tool/TraceLine.h"

#include <algorithm>
#include <charconv>

namespace tool {

namespace {

bool takeText(std::string_view& text, std::string_view expected) {
    const bool found = text.starts_with(expected);
    text.remove_prefix(found ? expected.size() : 0);
    return found;
}

template<class Number>
bool takeDigits(std::string_view& text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc();
}

// Fills the fields behind the call's number.
TraceLine withResult(TraceLine line) {
    constexpr std::string_view behind = ") = ";
    constexpr std::string_view span = " after ";
    const std::size_t end = line.rest.rfind(behind);
    line.returned = end != std::string_view::npos;
    if (line.returned)
        line.result = line.rest.substr(end + behind.size());
    const std::size_t close = line.returned ? end : line.rest.rfind(')');
    if (close != std::string_view::npos && close > 0)
        line.arguments = line.rest.substr(1, close - 1);
    line.failed =
        line.result.find(" error ") != std::string_view::npos || line.result.find(" fault") != std::string_view::npos;
    if (const std::size_t after = line.result.rfind(span); after != std::string_view::npos) {
        std::string_view number = line.result.substr(after + span.size());
        takeDigits(number, line.took);
    }
    return line;
}

} // namespace

std::optional<TraceLine> TraceLine::parse(std::string_view text) {
    constexpr std::string_view digits = "0123456789";
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    TraceLine line;
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::size_t time = std::min(text.find_first_not_of(digits), text.size());
    if (time > 0 && text.substr(time).starts_with(' ')) {
        takeDigits(text, line.time);
        text.remove_prefix(1);
    }
    for (std::size_t hash = text.find('#'); hash != std::string_view::npos; hash = text.find('#', hash + 1)) {
        line.program = text.substr(0, hash);
        line.rest = text.substr(hash + 1);
        const bool numbered = takeDigits(line.rest, line.start);
        line.process = text.substr(0, text.size() - line.rest.size());
        if (!numbered || !takeText(line.rest, " t") || !takeDigits(line.rest, line.thread) || !takeText(line.rest, " "))
            continue;
        line.function = line.rest.substr(0, line.rest.find_first_not_of(letters));
        line.rest.remove_prefix(line.function.size());
        if (takeText(line.rest, "[") && takeDigits(line.rest, line.call) && takeText(line.rest, "]"))
            return withResult(line);
    }
    return std::nullopt;
}

} // namespace tool
