#include "platform/tool/TraceEvents.h"

#include "platform/panel/Json.h"
#include "platform/tool/TraceLine.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <vector>

namespace tool {

namespace {

constexpr const char* overwritten = "the trace was overwritten meanwhile";
constexpr std::uint64_t millisecond = 1000000; // times are in ns here
constexpr std::uint64_t microsecond = 1000;

// The end of a call.
struct End {
    std::size_t run;
    std::uint64_t order; // 1: the first call of the run
};

// The ends of all calls.
class Ends {
public:
    // Counts the next call.
    End add(std::uint64_t milliseconds) {
        if (runs.empty() || runs.back().milliseconds != milliseconds)
            runs.push_back({milliseconds, 0});
        return {runs.size() - 1, ++runs.back().calls};
    }
    // Returns the end of the call after `previous` in a second pass.
    End next(End previous, std::uint64_t milliseconds) const {
        if (previous.run < runs.size() && runs[previous.run].milliseconds != milliseconds)
            previous = {previous.run + 1, 0};
        if (previous.run >= runs.size() || runs[previous.run].milliseconds != milliseconds)
            throw std::runtime_error(overwritten);
        return {previous.run, previous.order + 1};
    }
    std::uint64_t milliseconds(End end) const {
        return runs[end.run].milliseconds;
    }
    // Returns the time between two ends of a run. It is known when the run is complete.
    std::uint64_t step(End end) const {
        const std::uint64_t sharing = runs[end.run].calls;
        return sharing < 1000 ? microsecond : std::max(999 * microsecond / sharing, std::uint64_t{1});
    }
    std::uint64_t at(End end) const {
        return milliseconds(end) * millisecond + end.order * step(end);
    }
    std::uint64_t last() const {
        return runs.empty() ? 0 : at({runs.size() - 1, runs.back().calls});
    }

private:
    struct Run { // neighbouring calls that end in the same millisecond
        std::uint64_t milliseconds;
        std::uint64_t calls;
    };
    std::vector<Run> runs;
};

// A call that took panel time.
struct Wait {
    std::uint64_t begin;
    std::uint64_t end; // not known in the first pass, unless the call has not returned
    End counted;
    std::uint64_t place; // of its line
};

struct ProcessRow {
    std::size_t number;
    std::map<std::uint32_t, std::vector<End>> threads; // the last call of each run; without calls inside other calls
};

std::string jsonString(std::string_view text) {
    return panel::jsonText(panel::Json(text), -1);
}

std::string inMicroseconds(std::uint64_t time) {
    std::string text = std::to_string(time / microsecond);
    if (time % microsecond == 0)
        return text;
    text += '.' + std::to_string(microsecond + time % microsecond).substr(1);
    return text.substr(0, text.find_last_not_of('0') + 1);
}

class Converter {
public:
    Converter(TraceFile& from, const TraceFilter& admitting, const std::function<void(std::string_view)>& to,
              const std::function<void(double)>& telling)
        : trace(from), filter(admitting), write(to), progress(telling) {}

    std::size_t convert() {
        write("{\"displayTimeUnit\":\"ms\",\"traceEvents\":[");
        forEachCall(0, [&](const TraceLine& call, std::uint64_t place) { prepare(call, place); });
        for (Wait& wait : waits)
            if (!wait.end)
                wait.end = ends.at(wait.counted);
        // Viewers nest calls that begin together in this order.
        std::stable_sort(waits.begin(), waits.end(), [](const Wait& one, const Wait& other) {
            return one.begin != other.begin ? one.begin < other.begin : one.end > other.end;
        });
        End counted{0, 0};
        auto wait = waits.begin();
        const auto writeWaits = [&](std::uint64_t begin, std::uint64_t end) {
            for (; wait != waits.end() && (wait->begin != begin ? wait->begin < begin : wait->end > end); ++wait)
                if (const std::string line = trace.lineAt(wait->place); const auto call = TraceLine::parse(line))
                    add(*call, wait->begin, wait->end);
        };
        forEachCall(1, [&](const TraceLine& call, std::uint64_t) {
            if (!call.returned)
                return;
            counted = ends.next(counted, call.time);
            if (call.took)
                return;
            const std::uint64_t end = ends.at(counted);
            const std::uint64_t begin = end - ends.step(counted);
            writeWaits(begin, end);
            add(call, begin, end);
        });
        writeWaits(UINT64_MAX, 0);
        if (written != calls)
            throw std::runtime_error(overwritten);
        write("\n]}\n");
        return calls;
    }

private:
    template<class Receiver>
    void forEachCall(int pass, Receiver receive) {
        trace.read([&](const std::string& line, std::uint64_t place) {
            if (filter.admits(line))
                receive(TraceLine::parse(line).value(), place);
            progress((pass + static_cast<double>(place) / static_cast<double>(trace.end())) / 2);
        });
    }

    // Counts a call, notes it if it took panel time, and writes the names of a new process or thread.
    void prepare(const TraceLine& call, std::uint64_t place) {
        ++calls;
        const auto [process, fresh] =
            processes.try_emplace(std::string(call.process), ProcessRow{processes.size() + 1, {}});
        if (fresh)
            addName("process_name", process->second.number, 0, process->first);
        const auto [thread, started] = process->second.threads.try_emplace(call.thread);
        if (started)
            addName("thread_name", process->second.number, call.thread, 't' + std::to_string(call.thread));
        std::vector<End>& before = thread->second;
        if (!call.returned) { // all calls that have returned come before
            const std::uint64_t begin = beginOf(call.time, before);
            waits.push_back(
                {begin, std::max({ends.last(), trace.now() * millisecond, begin + microsecond}), {}, place});
            return;
        }
        const End end = ends.add(call.time);
        if (call.took)
            waits.push_back({beginOf(call.time - std::min(call.time, call.took), before), 0, end, place});
        if (!before.empty() && before.back().run == end.run)
            before.pop_back();
        before.push_back(end);
    }

    // Returns the earliest begin of a call in this millisecond. `before`: the calls of its thread, which lose those
    // that ran inside it.
    std::uint64_t beginOf(std::uint64_t milliseconds, std::vector<End>& before) const {
        while (!before.empty() && ends.milliseconds(before.back()) > milliseconds)
            before.pop_back();
        return std::max(milliseconds * millisecond, before.empty() ? 0 : ends.at(before.back()));
    }

    void addName(const char* what, std::size_t process, std::uint32_t thread, const std::string& name) {
        addEvent("{\"name\":\"" + std::string(what) + R"(","ph":"M","ts":0,"pid":)" + std::to_string(process) +
                 ",\"tid\":" + std::to_string(thread) + ",\"args\":{\"name\":" + jsonString(name) + "}}");
    }

    void add(const TraceLine& call, std::uint64_t begin, std::uint64_t end) {
        const auto process = processes.find(call.process);
        if (process == processes.end())
            throw std::runtime_error(overwritten);
        ++written;
        const bool waited = call.took || !call.returned;
        addEvent("{\"name\":" + jsonString(call.function) + ",\"cat\":\"" +
                 (call.failed ? "failed"
                  : waited    ? "wait"
                              : "call") +
                 R"(","ph":"X","ts":)" + inMicroseconds(begin) + ",\"dur\":" + inMicroseconds(end - begin) +
                 ",\"pid\":" + std::to_string(process->second.number) + ",\"tid\":" + std::to_string(call.thread) +
                 ",\"args\":{\"call\":" + std::to_string(call.call) + ",\"arguments\":" + jsonString(call.arguments) +
                 ",\"result\":" + jsonString(call.returned ? call.result : "has not returned") + "}}");
    }

    void addEvent(const std::string& event) {
        write(separator + event);
        separator = ",\n";
    }

    TraceFile& trace;
    const TraceFilter& filter;
    const std::function<void(std::string_view)>& write;
    const std::function<void(double)>& progress;
    std::map<std::string, ProcessRow, std::less<>> processes;
    Ends ends;
    std::vector<Wait> waits;
    std::size_t calls = 0; // in the first pass
    std::size_t written = 0; // in the second one
    std::string separator = "\n";
};

} // namespace

std::size_t writeTraceEvents(TraceFile& trace, const TraceFilter& filter,
                             const std::function<void(std::string_view)>& write,
                             const std::function<void(double)>& progress) {
    return Converter(trace, filter, write, progress).convert();
}

} // namespace tool
