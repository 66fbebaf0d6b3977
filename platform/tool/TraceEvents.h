// Converts the call trace to the Trace Event Format: the JSON that trace viewers read.
//
// Each process and each thread has a "metadata" event with its name, and each call is a "complete" event. Times are
// panel time in microseconds. The trace has milliseconds: the calls that end in the same millisecond end at rising
// microseconds within it, in the order of the trace. A call without panel time lasts one microsecond (less if more than
// 999 calls end in its millisecond). A call that took panel time begins with its first millisecond, but not before the
// end of the call before it in its thread. It encloses the calls that ran inside it, in a window procedure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

class TraceEvents {
public:
    // Adds a line of the trace. The lines come in the order of the trace.
    void add(std::string_view line);
    // Adds a call that has not returned, after all lines. Its event lasts until `now` in panel ms, or until the end of
    // the trace if that is later.
    void addUnreturned(std::string_view line, std::uint64_t now);

    std::size_t count() const { // number of calls
        return calls.size();
    }
    std::string document() const; // the whole file

private:
    struct Call {
        std::string line;
        std::size_t order = 0; // 1: the first call that ended in its millisecond
        std::uint64_t now = 0; // calls that have not returned: panel ms
    };

    std::vector<Call> calls;
    std::map<std::uint64_t, std::size_t> ends; // panel ms: number of calls that ended then
};

} // namespace tool
