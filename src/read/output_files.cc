#include "read/output_files.h"

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

fs::path output_path(const std::string& output, const fs::path& image, std::size_t image_count) {
  if (image_count == 1) return output;
  std::error_code error;
  if (fs::is_directory(output, error)) {
    return fs::path(output) / ("detected_" + image.filename().string());
  }
  fs::path out(output);
  if (!out.has_filename()) out = out.parent_path();  // a slash at the end says nothing more
  return out.parent_path() / ("detected_" + image.stem().string() + out.extension().string());
}

WrittenFiles::WrittenFiles(const std::vector<fs::path>& inputs) {
  for (const fs::path& input : inputs) contents_[real_name(input)] = "the photo";
}

std::string WrittenFiles::add(const fs::path& target, const std::string& content) {
  std::string before = std::exchange(contents_[real_name(target)], content);
  if (before.empty()) return {};
  return "zv-anpr: " + target.string() + " held " + before + " and now holds " + content;
}

}  // namespace zv::read
