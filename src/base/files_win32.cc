#include <windows.h>

#include <cerrno>
#include <fstream>

#include "base/error.h"
#include "base/files.h"

namespace zv {

void write_file(const std::filesystem::path& path, std::string_view data) {
  const auto fail = [&](int problem) { throw Error(os_error_text(problem, path.string())); };
  std::error_code error;
  const auto target = std::filesystem::exists(path, error) ? resolved(path) : path;
  const bool replaceable = !std::filesystem::exists(target, error) ||
                           (std::filesystem::is_regular_file(target, error) &&
                            std::filesystem::hard_link_count(target, error) == 1);
  auto fresh = target;
  if (replaceable) fresh += ".tmp";
  errno = 0;
  std::ofstream file(fresh, std::ios::binary | std::ios::trunc);
  if (!file) fail(errno != 0 ? errno : EIO);
  file.write(data.data(), static_cast<std::streamsize>(data.size()));
  file.close();
  const int problem = file ? 0 : errno != 0 ? errno : EIO;
  if (problem == 0 && replaceable) std::filesystem::rename(fresh, target, error);
  if (problem == 0 && !error) return;
  if (replaceable) std::filesystem::remove(fresh, error);
  fail(problem != 0 ? problem : EACCES);
}

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
