#include "cli/suggest.h"

#include <algorithm>
#include <numeric>

namespace zv::cli {
namespace {

std::size_t edit_distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0U);
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, replaced});
    }
  }
  return row.back();
}

}  // namespace

std::string suggestion(const std::string& typed, const std::vector<std::string>& known) {
  constexpr std::size_t LONGEST = 64;  // nobody mistypes a word that is longer than this
  if (typed.size() > LONGEST) return {};
  std::string nearest;
  std::size_t best = std::max<std::size_t>(2, typed.size() / 3) + 1;
  for (const std::string& word : known) {
    const std::size_t distance = edit_distance(typed, word);
    if (distance >= best) continue;
    best = distance;
    nearest = word;
  }
  return nearest.empty() ? std::string() : " (did you mean '" + nearest + "'?)";
}

}  // namespace zv::cli
