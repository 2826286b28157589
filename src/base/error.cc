#include "base/error.h"

#include <cstring>

#include "base/python_text.h"

namespace zv {

std::string os_error_text(int error_number, const std::string& path) {
  std::string text = "[Errno " + std::to_string(error_number) + "] " + std::strerror(error_number);
  return path.empty() ? text : text + ": " + quoted_text(path);
}

}  // namespace zv
