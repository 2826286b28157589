#include "image/file_error.h"

#include "base/value_text.h"

namespace zv::image {

std::string quoted(const std::filesystem::path& path) {
  return quoted_text(path.string());
}

Error file_error(int error_number, const std::filesystem::path& path) {
  return Error(os_error_text(error_number, path.string()));
}

}  // namespace zv::image
