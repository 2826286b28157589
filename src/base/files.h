// Whole files in and out, where they lie, and folders kept from others.
#pragma once

#include <cstdint>
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

// Keeps other runs of this program out of a folder as long as this process lives.
class FolderLock {
 public:
  // Does not wait. A folder that cannot be locked at all counts as ours.
  explicit FolderLock(const std::string& folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  bool ours() const { return ours_; }

 private:
  static constexpr std::intptr_t NONE = -1;
  std::intptr_t handle_ = NONE;  // the system closes it with the process, however that ends
  bool ours_ = true;
};

}  // namespace zv
