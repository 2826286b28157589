#include <windows.h>

#include <filesystem>

#include "base/folder_lock.h"

namespace zv {

// Folders cannot be locked here: a file in it that nobody else may open and that goes with us.
FolderLock::FolderLock(const std::string& folder) {
  const std::filesystem::path file =
      std::filesystem::path(std::u8string(folder.begin(), folder.end())) / ".zv-anpr.lock";
  const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  ours_ = handle != INVALID_HANDLE_VALUE || GetLastError() != ERROR_SHARING_VIOLATION;
  if (handle != INVALID_HANDLE_VALUE) handle_ = reinterpret_cast<std::intptr_t>(handle);
}

FolderLock::~FolderLock() {
  if (handle_ != NONE) CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace zv
