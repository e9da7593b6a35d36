#include "client/NearestWord.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace halvo {
namespace {

// Longer than every request and option with all the mistakes that it may have. What is typed has no end otherwise, and
// the table grows with it.
constexpr std::size_t kLongest = 64;

// The table holds the distance between the beginnings of both words, for every pair of lengths.
std::size_t mistakesBetween(std::string_view typed, std::string_view meant) {
  std::vector<std::vector<std::size_t>> distance(typed.size() + 1, std::vector<std::size_t>(meant.size() + 1));
  std::iota(distance[0].begin(), distance[0].end(), std::size_t{0});
  for (std::size_t i = 1; i <= typed.size(); ++i) {
    distance[i][0] = i;
    for (std::size_t j = 1; j <= meant.size(); ++j) {
      const std::size_t wrong = typed[i - 1] == meant[j - 1] ? 0 : 1;
      std::size_t least = std::min({distance[i - 1][j] + 1, distance[i][j - 1] + 1, distance[i - 1][j - 1] + wrong});
      const bool changedPlaces = i > 1 && j > 1 && typed[i - 1] == meant[j - 2] && typed[i - 2] == meant[j - 1];
      if (changedPlaces) least = std::min(least, distance[i - 2][j - 2] + 1);
      distance[i][j] = least;
    }
  }
  return distance[typed.size()][meant.size()];
}

}  // namespace

std::string_view nearestWord(std::string_view typed, std::span<const std::string_view> known) {
  if (typed.size() > kLongest) return {};
  constexpr std::size_t kCharactersPerMistake = 3;
  std::string_view nearest;
  std::size_t fewest = typed.size() / kCharactersPerMistake + 1;
  for (const std::string_view word : known) {
    const std::size_t mistakes = mistakesBetween(typed, word);
    if (mistakes >= fewest) continue;
    fewest = mistakes;
    nearest = word;
  }
  return nearest;
}

std::string suggestionFor(std::string_view typed, std::span<const std::string_view> known) {
  const std::string_view meant = nearestWord(typed, known);
  return meant.empty() || meant == typed ? std::string() : " (did you mean '" + std::string(meant) + "'?)";
}

}  // namespace halvo
