#include "platform/panel/Functions.h"

#include <coredll.h>
#include <tagUserAPI.h>

namespace panel {

namespace {

// Checks that every listed function is declared and noexcept.
#define COREDLL(name, how, failure, lastError) COREDLL_SURE(name, how)
#define COREDLL_SURE(name, how) static_assert(isPlatformFunction(&::name));
template<class Result, class... Arguments>
constexpr bool isPlatformFunction(Result (*)(Arguments...) noexcept) {
    return true;
}
#include <coredll.inc>
#define TAG_FUNCTION(name) static_assert(isPlatformFunction(&::name));
#include <tagUserAPI.inc>

constexpr FunctionFacts table[] = {
#define COREDLL(name, how, failure, lastError) {#name, true, failure, lastError},
#define COREDLL_SURE(name, how) {#name, false, 0, 0},
#include <coredll.inc>
#define TAG_FUNCTION(name) {#name, true, FALSE, ERROR_GEN_FAILURE},
#include <tagUserAPI.inc>
};

} // namespace

const FunctionFacts& facts(Function function) {
    return table[static_cast<std::size_t>(function)];
}

std::optional<Function> functionNamed(std::string_view name) {
    for (std::size_t index = 0; index < functionCount; ++index)
        if (table[index].name == name)
            return static_cast<Function>(index);
    return std::nullopt;
}

} // namespace panel
