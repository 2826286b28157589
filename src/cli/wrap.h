// Breaking text into lines at blanks.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zv::cli {

// Lines of at most `width` columns; a longer word stands alone on its line.
std::vector<std::string> wrap(std::string_view text, std::size_t width);
// The same for words that must not be broken up.
std::vector<std::string> wrap_words(const std::vector<std::string>& words, std::size_t width);

}  // namespace zv::cli
