// Which files count as images.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zv {

// Lower case, with the dot. Nothing else is accepted anywhere.
std::span<const std::string_view> allowed_image_extensions();
// Whether the path's extension, in any case, is one of them.
bool has_image_extension(const std::filesystem::path& path);
// The absolute path, links resolved, of an existing regular image file; nothing for all else.
std::optional<std::filesystem::path> validate_file_path(const std::string& file_path);

}  // namespace zv
