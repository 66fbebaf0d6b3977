#include "platform/tool/TraceEvents.h"

#include "platform/panel/Json.h"
#include "platform/tool/TraceLine.h"

#include <algorithm>

namespace tool {

namespace {

constexpr std::uint64_t millisecond = 1000000; // times are in ns here
constexpr std::uint64_t microsecond = 1000;

struct Span {
    std::uint64_t begin;
    std::uint64_t end;
    panel::Json event;
};

// The ended calls of a thread. A call that encloses others replaces them.
struct ThreadRow {
    struct End {
        std::uint64_t milliseconds;
        std::uint64_t at;
    };
    std::vector<End> ends;

    // Returns the earliest begin of a call in this millisecond, and drops the calls that ran inside it.
    std::uint64_t beginOf(std::uint64_t milliseconds) {
        while (!ends.empty() && ends.back().milliseconds > milliseconds)
            ends.pop_back();
        return std::max(milliseconds * millisecond, ends.empty() ? 0 : ends.back().at);
    }
};

struct ProcessRow {
    std::size_t number;
    std::map<std::uint32_t, ThreadRow> threads;
};

panel::Json inMicroseconds(std::uint64_t time) {
    if (time % microsecond == 0)
        return time / microsecond;
    return static_cast<double>(time) / microsecond;
}

panel::Json nameOf(const char* what, std::size_t process, std::uint32_t thread, const std::string& name) {
    return {{"name", what}, {"ph", "M"}, {"ts", 0}, {"pid", process}, {"tid", thread}, {"args", {{"name", name}}}};
}

} // namespace

void TraceEvents::add(std::string_view line) {
    if (const auto call = TraceLine::parse(line))
        calls.push_back({std::string(line), ++ends[call->time]});
}

void TraceEvents::addUnreturned(std::string_view line, std::uint64_t now) {
    if (TraceLine::parse(line))
        calls.push_back({std::string(line), 0, now});
}

std::string TraceEvents::document() const {
    std::vector<panel::Json> names;
    std::vector<Span> spans;
    std::map<std::string_view, ProcessRow> processes;
    std::uint64_t last = 0;
    for (const Call& call : calls) {
        const TraceLine line = TraceLine::parse(call.line).value(); // `add` keeps no other text
        const auto [process, fresh] = processes.try_emplace(line.process, ProcessRow{processes.size() + 1, {}});
        const std::size_t number = process->second.number;
        if (fresh)
            names.push_back(nameOf("process_name", number, 0, std::string(line.process)));
        const auto [thread, started] = process->second.threads.try_emplace(line.thread);
        if (started)
            names.push_back(nameOf("thread_name", number, line.thread, 't' + std::to_string(line.thread)));
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        if (call.order == 0) { // all calls that have returned come before
            begin = thread->second.beginOf(line.time);
            end = std::max({last, call.now * millisecond, begin + microsecond});
        } else {
            const std::size_t sharing = ends.at(line.time);
            const std::uint64_t step = sharing < 1000 ? microsecond : std::max(999 * microsecond / sharing, 1UL);
            end = line.time * millisecond + call.order * step;
            begin = line.took ? thread->second.beginOf(line.time - line.took) : end - step;
            thread->second.ends.push_back({line.time, end});
            last = std::max(last, end);
        }
        panel::Json event{{"name", line.function},
                          {"cat", line.failed                   ? "failed"
                                  : line.took || !line.returned ? "wait"
                                                                : "call"},
                          {"ph", "X"},
                          {"ts", inMicroseconds(begin)},
                          {"dur", inMicroseconds(end - begin)},
                          {"pid", number},
                          {"tid", line.thread},
                          {"args",
                           {{"call", line.call},
                            {"arguments", line.arguments},
                            {"result", line.returned ? line.result : "has not returned"}}}};
        spans.push_back({begin, end, std::move(event)});
    }
    // Viewers nest calls that begin together in this order.
    std::stable_sort(spans.begin(), spans.end(), [](const Span& one, const Span& other) {
        return one.begin != other.begin ? one.begin < other.begin : one.end > other.end;
    });
    std::string text = "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[";
    const char* separator = "\n";
    const auto append = [&](const panel::Json& event) {
        text += separator + panel::jsonText(event, -1);
        separator = ",\n";
    };
    for (const panel::Json& name : names)
        append(name);
    for (const Span& span : spans)
        append(span.event);
    return text + "\n]}\n";
}

} // namespace tool
