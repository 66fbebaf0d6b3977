#include "platform/panel/Functions.h"

namespace panel {

namespace {

constexpr FunctionFacts table[] = {
#define COREDLL(name, how, failure, lastError) {#name, true, failure, lastError},
#define COREDLL_SURE(name, how) {#name, false, 0, 0},
#include <coredll.inc>
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
