// The table of all platform functions, made from coredll.inc and tagUserAPI.inc. Each function has a number, a name and
// the result of its failing call.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace panel {

// The functions by number.
enum class Function : std::uint32_t {
#define COREDLL(name, how, failure, lastError) name,
#define COREDLL_SURE(name, how) name,
#include <coredll.inc>
#define TAG_FUNCTION(name) name,
#include <tagUserAPI.inc>
    count
};

inline constexpr auto functionCount = static_cast<std::size_t>(Function::count);

// A line of the table.
struct FunctionFacts {
    std::string_view name;
    bool canFail;
    std::int64_t failure; // result of a failing call
    std::uint32_t lastError; // last error after a failing call
};

// Returns the line of a function.
const FunctionFacts& facts(Function function);
// Finds a function by name, case-sensitively.
std::optional<Function> functionNamed(std::string_view name);

} // namespace panel
