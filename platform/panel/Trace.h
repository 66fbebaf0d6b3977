// The call trace of a panel: run/trace, one line a call, written when the call is done:
//
//       1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void after 1000 ms
//
// panel time in ms at the call's end; process and its how many-th start; thread by order of creation; the function and
// which of the thread's calls of it this is; arguments; the result, with the last error of a failure, "fault" where
// one was asked for, and the panel time that the call took if any. What has not returned is not there yet: the kernel
// file has it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace panel {

// How a line begins: "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000)".
std::string traceLine(std::uint64_t time, std::string_view process, std::uint32_t thread, std::string_view call);
void writeTraceLine(const std::string& directory, std::string_view line);

} // namespace panel
