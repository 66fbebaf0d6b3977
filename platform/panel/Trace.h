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
// A call that has not returned has no line. ThreadRecord::call in the kernel file holds it while its thread waits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace panel {

// Returns the beginning of a line: "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000)".
std::string traceLine(std::uint64_t time, std::string_view process, std::uint32_t thread, std::string_view call);
// Appends a whole line to the trace of the panel in this directory. Any thread of any process may call this. Failures
// are ignored.
void writeTraceLine(const std::string& directory, std::string_view line);

} // namespace panel
