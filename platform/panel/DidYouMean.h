// Guesses the word that the user has mistyped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace panel {

// Returns `, did you mean "status"?` with the most similar word, or "" if none is similar. Case does not count.
std::string didYouMean(std::string_view word, const std::vector<std::string>& known);

} // namespace panel
