// The API's functions by number, with what each answers when it fails: the list of platform/include, as a table; and
// those of the tag library.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace panel {

enum class Function : std::uint32_t {
#define COREDLL(name, how, failure, lastError) name,
#define COREDLL_SURE(name, how) name,
#include <coredll.inc>
#define TAG_FUNCTION(name) name,
#include <tagUserAPI.inc>
    count
};

inline constexpr auto functionCount = static_cast<std::size_t>(Function::count);

struct FunctionFacts {
    std::string_view name;
    bool canFail;
    std::int64_t failure; // the result of a failing call
    std::uint32_t lastError;
};

const FunctionFacts& facts(Function function);
std::optional<Function> functionNamed(std::string_view name); // exact case

} // namespace panel
