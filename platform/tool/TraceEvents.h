// Converts the call trace to the Trace Event Format: the JSON that trace viewers read.
//
// Each process and each thread has a "metadata" event with its name, and each call is a "complete" event. Times are
// panel time in microseconds. The trace has milliseconds: the calls that end in the same millisecond end at rising
// microseconds within it, in the order of the trace. A call without panel time lasts one microsecond (less if more than
// 999 calls end in its millisecond). A call that took panel time begins with its first millisecond, but not before the
// end of the call before it in its thread. It encloses the calls that ran inside it, in a window procedure. A call that
// has not returned lasts until the present, or until the end of the trace if that is later.
#pragma once

#include "platform/tool/TraceFile.h"
#include "platform/tool/TraceFilter.h"

#include <cstddef>
#include <functional>
#include <string_view>

namespace tool {

// Reads the trace twice, and passes the document piece by piece to `write`, the calls in the order of their begins.
// Keeps some bytes for each call that took panel time and for each millisecond in which calls end. `progress` gets the
// part that is done, from 0 to 1. Returns the number of calls. Throws std::runtime_error if the file was overwritten
// meanwhile.
std::size_t writeTraceEvents(TraceFile& trace, const TraceFilter& filter,
                             const std::function<void(std::string_view)>& write,
                             const std::function<void(double)>& progress);

} // namespace tool
