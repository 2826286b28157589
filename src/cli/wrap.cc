#include "cli/wrap.h"

#include <sstream>

#include "base/unicode.h"

namespace zv::cli {

std::vector<std::string> wrap(std::string_view text, std::size_t width) {
  std::istringstream stream{std::string(text)};
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return wrap_words(words, width);
}

std::vector<std::string> wrap_words(const std::vector<std::string>& words, std::size_t width) {
  std::vector<std::string> lines;
  for (const std::string& word : words) {
    const bool fits =
        !lines.empty() && count_characters(lines.back()) + 1 + count_characters(word) <= width;
    if (fits) {
      lines.back() += " " + word;
    } else {
      lines.push_back(word);
    }
  }
  return lines;
}

}  // namespace zv::cli
