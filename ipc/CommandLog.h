// The two log lines that every handler of commands writes.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

namespace CommandLog {

// "<handler>;message received <code>", before the command is carried out.
void received(std::wstring_view handler, WPARAM command);
// "<handler>;message handled <code> result: <result>", after it.
void handled(std::wstring_view handler, WPARAM command, std::uint32_t result);

} // namespace CommandLog
