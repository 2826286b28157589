#include "base/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

namespace fs = std::filesystem;

constexpr int MOST_LINKS = 40;  // as systems have it; "a -> gone/../a" leads to itself for ever

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

// A pipe is open only when its other end is, and Ctrl+C ends the wait for that.
File open(const fs::path& path) {
  File file(std::fopen(path.string().c_str(), "rb"));
  while (!file && errno == EINTR) {
    check_interrupt();
    file.reset(std::fopen(path.string().c_str(), "rb"));
  }
  if (!file) throw Error(os_error_text(errno, path.string()));
  return file;
}

}  // namespace

std::string read_file(const fs::path& path, std::size_t most) {
  const File file = open(path);
  std::string data;
  std::error_code not_known;
  const auto size = fs::file_size(path, not_known);
  if (!not_known) data.reserve(std::min<std::uintmax_t>(size, most));
  char chunk[1 << 16];
  for (std::size_t count = 1; count > 0 && data.size() < most;) {
    check_interrupt();
    count = std::fread(chunk, 1, std::min(sizeof chunk, most - data.size()), file.get());
    data.append(chunk, count);
  }
  if (std::ferror(file.get()) == 0) return data;
  const int problem = errno;
  check_interrupt();
  throw Error(os_error_text(problem, path.string()));
}

fs::path resolved(const fs::path& path) {
  std::error_code error;
  // A pipe that is reached through a descriptor's name has no other.
  if (fs::exists(path, error) && fs::canonical(path, error).empty()) return fs::absolute(path);
  fs::path target = fs::weakly_canonical(fs::absolute(path));
  for (int links = 0; fs::is_symlink(fs::symlink_status(target)); ++links) {  // to nothing yet
    if (links == MOST_LINKS) throw Error(os_error_text(ELOOP, path.string()));
    target = fs::weakly_canonical(target.parent_path() / fs::read_symlink(target));
  }
  return target;
}

}  // namespace zv
