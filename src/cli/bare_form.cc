#include "cli/bare_form.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace zv::cli {
namespace {

// Only these are never taken for files; the others are commands unless an entry has their name.
constexpr std::array<std::string_view, 5> PROTECTED = {"gpu-info", "gpu-setup", "model-info",
                                                       "version", "server"};

bool names_files(const std::string& word) {
  if (word.starts_with('-')) return false;
  if (std::find(PROTECTED.begin(), PROTECTED.end(), word) != PROTECTED.end()) return false;
  if (word.find_first_of("./\\*") != std::string::npos) return true;
  std::error_code error;
  return std::filesystem::exists(word, error);
}

}  // namespace

std::vector<std::string> with_read(std::vector<std::string> words) {
  if (!words.empty() && names_files(words.front())) words.insert(words.begin(), "read");
  return words;
}

}  // namespace zv::cli
