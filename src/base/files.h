// Whole files in and out.
#pragma once

#include <filesystem>
#include <string>

namespace zv {

// Throws Error with the OS text and the path.
std::string read_file(const std::filesystem::path& path);
// Creates or replaces; the data has reached the system when it returns. Throws Error.
void write_file(const std::filesystem::path& path, const std::string& data);

}  // namespace zv
