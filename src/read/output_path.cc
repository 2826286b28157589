#include "read/output_path.h"

namespace zv::read {

namespace fs = std::filesystem;

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

}  // namespace zv::read
