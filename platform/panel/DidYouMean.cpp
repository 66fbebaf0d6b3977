#include "platform/panel/DidYouMean.h"

#include "platform/panel/Text.h"

#include <algorithm>

namespace panel {

namespace {

// Returns how many typing errors lie between two words: a letter too many, missing, wrong, or swapped with the next.
std::size_t distance(std::string_view first, std::string_view second) {
    std::vector<std::vector<std::size_t>> costs(first.size() + 1, std::vector<std::size_t>(second.size() + 1));
    for (std::size_t row = 0; row <= first.size(); ++row)
        for (std::size_t column = 0; column <= second.size(); ++column) {
            std::size_t& cost = costs[row][column] = std::max(row, column);
            if (row == 0 || column == 0)
                continue;
            cost = std::min({costs[row - 1][column] + 1, costs[row][column - 1] + 1,
                             costs[row - 1][column - 1] + (first[row - 1] != second[column - 1])});
            if (row > 1 && column > 1 && first[row - 1] == second[column - 2] && first[row - 2] == second[column - 1])
                cost = std::min(cost, costs[row - 2][column - 2] + 1);
        }
    return costs.back().back();
}

} // namespace

std::string didYouMean(std::string_view word, const std::vector<std::string>& known) {
    constexpr std::size_t longest = 64;
    std::size_t least = 2 + std::min(word.size(), longest) / 4; // a similar word has fewer typing errors
    std::string meant;
    for (const std::string& each : known) {
        const std::size_t errors =
            std::max(word.size(), each.size()) > longest ? longest : distance(fold(word), fold(each));
        if (errors >= std::min(least, each.size()))
            continue;
        least = errors;
        meant = each;
    }
    return meant.empty() ? "" : ", did you mean \"" + meant + "\"?";
}

} // namespace panel
