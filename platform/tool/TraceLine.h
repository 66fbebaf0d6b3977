// The parts of a line of the call trace (platform/panel/Trace.h describes the line).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tool {

// The texts are parts of the parsed line, which must live as long.
struct TraceLine {
    std::uint64_t time = 0; // panel ms since boot; 0 if the text begins with the process
    std::string_view process; // "TarvexHelper.exe#1"
    std::string_view program; // "TarvexHelper.exe"; the name may contain spaces
    std::uint32_t start = 0; // start number of the program since boot
    std::uint32_t thread = 0;
    std::string_view function;
    std::uint32_t call = 0; // number of the call in its thread
    std::string_view rest; // "(1000) = void after 1000 ms"; "() has not returned"
    std::string_view arguments; // "1000"
    bool returned = false;
    std::string_view result; // "void after 1000 ms"
    bool failed = false; // the call left an error, or a fault was injected
    std::uint64_t took = 0; // panel ms from the beginning of the call to its end

    // Parses a line, or its beginning up to the number of the call. The time may be missing. Returns an empty value for
    // any other text.
    static std::optional<TraceLine> parse(std::string_view text);
};

} // namespace tool
