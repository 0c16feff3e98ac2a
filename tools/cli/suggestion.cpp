#include "tools/cli/suggestion.h"

#include <algorithm>
#include <cstddef>

namespace tool {

namespace {

constexpr std::size_t MAX_SLIPS = 2;

/// The slips from one word to the other: letters added, left out, changed, or swapped with their
/// neighbour (optimal string alignment).
std::size_t countSlips(const std::string& from, const std::string& to) {
  std::vector<std::vector<std::size_t>> slips(from.size() + 1,
                                              std::vector<std::size_t>(to.size() + 1));
  for (std::size_t i = 0; i <= from.size(); ++i) slips[i][0] = i;
  for (std::size_t j = 0; j <= to.size(); ++j) slips[0][j] = j;
  for (std::size_t i = 1; i <= from.size(); ++i) {
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t change = from[i - 1] == to[j - 1] ? 0 : 1;
      const bool isSwap = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      slips[i][j] =
          std::min({slips[i - 1][j] + 1, slips[i][j - 1] + 1, slips[i - 1][j - 1] + change});
      if (isSwap) slips[i][j] = std::min(slips[i][j], slips[i - 2][j - 2] + 1);
    }
  }
  return slips[from.size()][to.size()];
}

}  // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& names) {
  std::string nearest;
  std::size_t fewest = MAX_SLIPS + 1;
  for (const std::string& name : names) {
    const std::size_t slips = countSlips(word, name);
    if (slips < std::min(fewest, word.size())) nearest = name;
    fewest = std::min(fewest, slips);
  }
  return nearest.empty() ? "" : ": did you mean \"" + nearest + "\"?";
}

}  // namespace tool
