// Words for what the operating system says about a file: "[Errno 2] No such file ...: 'name'".
#pragma once

#include <filesystem>
#include <string>

#include "base/error.h"

namespace zv::image {

// The path between quotes, with control characters and broken bytes escaped.
std::string quoted(const std::filesystem::path& path);

Error file_error(int error_number, const std::filesystem::path& path);

}  // namespace zv::image
