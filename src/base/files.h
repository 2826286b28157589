// Whole files in and out, and where they lie.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zv {

// The first `most` bytes. Throws Error with the OS text and the path, and Interrupted for Ctrl+C.
std::string read_file(const std::filesystem::path& path, std::size_t most = std::string::npos);
// Creates or replaces, all or nothing: the data is written beside the file, flushed to the disk and
// moved over it. Mode, owner and links stay. What is no file of its own (a device, a pipe, a name
// of several) is written in place. Throws Error with the OS text and the path, and Interrupted.
void write_file(const std::filesystem::path& path, std::string_view data);
// Absolute, with every link followed, also one whose target is not there yet: where a file of this
// name would be written. Throws Error or std::filesystem::filesystem_error.
std::filesystem::path resolved(const std::filesystem::path& path);

}  // namespace zv
