#include "ipc/CommandLog.h"

#include "OrvaUtils/Text.h"
#include "app/log/Logger.h"

using namespace std::string_view_literals;

namespace CommandLog {

namespace {

// A message parameter may be wider than the 32 bits of a command code.
std::wstring decimalCode(WPARAM command) {
    return OrvaUtils::decimal(static_cast<DWORD>(command));
}

} // namespace

void received(std::wstring_view handler, WPARAM command) {
    Logger& log = Logger::instance();
    if (log.admits(LogLevel::Info)) {
        log.writeParts(LogLevel::Info, {handler, L";message received "sv, decimalCode(command)});
    }
}

void handled(std::wstring_view handler, WPARAM command, std::uint32_t result) {
    Logger& log = Logger::instance();
    if (log.admits(LogLevel::Info)) {
        log.writeParts(LogLevel::Info, {handler, L";message handled "sv, decimalCode(command), L" result: "sv,
                                        OrvaUtils::decimal(result)});
    }
}

} // namespace CommandLog
