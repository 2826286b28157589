// Keeps other runs of this program out of a folder as long as this process lives.
#pragma once

#include <cstdint>
#include <string>

namespace zv {

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
