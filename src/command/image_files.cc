#include "command/image_files.h"

#include <algorithm>
#include <array>

#include "base/unicode.h"

namespace zv {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 6> ALLOWED_IMAGE_EXTENSIONS = {".jpg", ".jpeg", ".png",
                                                                      ".bmp", ".tiff", ".tif"};

}  // namespace

std::span<const std::string_view> allowed_image_extensions() {
  return ALLOWED_IMAGE_EXTENSIONS;
}

bool has_image_extension(const fs::path& path) {
  const std::string extension = ascii_lower(path.extension().string());
  return std::find(ALLOWED_IMAGE_EXTENSIONS.begin(), ALLOWED_IMAGE_EXTENSIONS.end(), extension) !=
         ALLOWED_IMAGE_EXTENSIONS.end();
}

std::optional<fs::path> validate_file_path(const std::string& file_path) {
  std::error_code error;
  fs::path resolved = fs::canonical(file_path, error);
  if (error || !fs::is_regular_file(resolved, error) || error) return std::nullopt;
  if (!has_image_extension(resolved)) return std::nullopt;
  return resolved;
}

}  // namespace zv
