// The two log lines that every handler of commands writes.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace CommandLog {

// "<handler>;message received <code>", before the command is carried out.
void received(const std::wstring& handler, WPARAM command);
// "<handler>;message handled <code> result: <result>", after it.
void handled(const std::wstring& handler, WPARAM command, std::uint32_t result);

} // namespace CommandLog
