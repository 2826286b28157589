// Whole files in and out, and where they lie.
#pragma once

#include <filesystem>
#include <string>

namespace zv {

// Throws Error with the OS text and the path.
std::string read_file(const std::filesystem::path& path);
// Creates or replaces; the data has reached the system when it returns. Throws Error.
void write_file(const std::filesystem::path& path, const std::string& data);
// Absolute, with every link followed, also one whose target is not there yet: where a file of this
// name would be written. Throws Error or std::filesystem::filesystem_error.
std::filesystem::path resolved(const std::filesystem::path& path);

}  // namespace zv
