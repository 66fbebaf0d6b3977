// The two log lines that every message handler writes, at level INFO. The command code is logged as an unsigned 32-bit
// decimal number. Any thread may call; handlers call on the thread of the message loop.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

namespace CommandLog {

// Writes "<handler>;message received <code>". Call it before the command is carried out.
void received(std::wstring_view handler, WPARAM command);
// Writes "<handler>;message handled <code> result: <result>". Call it after the command was carried out. A handler that
// throws does not write this line.
void handled(std::wstring_view handler, WPARAM command, std::uint32_t result);

} // namespace CommandLog
