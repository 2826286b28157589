#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "base/folder_lock.h"

namespace zv {

FolderLock::FolderLock(const std::string& folder)
    : handle_(open(folder.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (handle_ == NONE) return;
  ours_ = flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

FolderLock::~FolderLock() {
  if (handle_ != NONE) close(static_cast<int>(handle_));
}

}  // namespace zv
