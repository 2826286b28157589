#include "read/written_files.h"

#include <utility>

namespace zv::read {
namespace {

namespace fs = std::filesystem;

fs::path real_name(const fs::path& path) {
  std::error_code error;
  fs::path real = fs::weakly_canonical(path, error);
  return error ? path : real;
}

}  // namespace

WrittenFiles::WrittenFiles(const std::vector<fs::path>& inputs) {
  for (const fs::path& input : inputs) contents_[real_name(input)] = "the photo";
}

std::string WrittenFiles::add(const fs::path& target, const std::string& content) {
  std::string before = std::exchange(contents_[real_name(target)], content);
  if (before.empty()) return {};
  return "zv-anpr: " + target.string() + " held " + before + " and now holds " + content;
}

}  // namespace zv::read
