// The call trace of a panel: the file run/trace. A call adds one line when it returns:
//
//       1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void after 1000 ms
//
// The parts of a line are
// - the panel time in ms at the end of the call;
// - the process and its start number; the thread number by order of creation;
// - the function, the number of its call in this thread, and the arguments;
// - the result, followed by "error N" for a failure, "fault" for an injected fault, and the panel time that has passed
//   during the call.
//
// If the trace has reached its limit, its last line is no call: "      1000 the trace ends here: ...".
//
// A call that has not returned has no line. ThreadRecord::call in the kernel file holds it while its thread waits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace panel {

// Returns the beginning of a line: "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000)".
std::string traceLine(std::uint64_t time, std::string_view process, std::uint32_t thread, std::string_view call);

// The limit of a trace: the size of the file in KiB at which the trace switches itself off.
inline constexpr std::uint32_t defaultTraceLimit = 64 << 10;
inline constexpr std::uint32_t noTraceLimit = UINT32_MAX;

// Appends a line with its line end to the trace of the panel in this directory. The caller holds the kernel's lock.
// Returns false if the file has reached the limit; its last line then says so, and the trace must be switched off.
// Other failures are ignored.
bool writeTraceLine(const std::string& directory, std::string_view line, std::uint32_t limit);

} // namespace panel
