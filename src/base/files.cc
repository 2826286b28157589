#include "base/files.h"

#include <cerrno>
#include <cstdio>
#include <memory>

#include "base/error.h"

namespace zv {
namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

Error failure(const std::filesystem::path& path) {
  return Error(os_error_text(errno, path.string()));
}

File open(const std::filesystem::path& path, const char* mode) {
  File file(std::fopen(path.string().c_str(), mode));
  if (!file) throw failure(path);
  return file;
}

}  // namespace

std::string read_file(const std::filesystem::path& path) {
  const File file = open(path, "rb");
  std::string data;
  std::error_code not_known;
  const auto size = std::filesystem::file_size(path, not_known);
  if (!not_known) data.reserve(size);
  char chunk[1 << 16];
  for (std::size_t count = 0; (count = std::fread(chunk, 1, sizeof chunk, file.get())) > 0;) {
    data.append(chunk, count);
  }
  if (std::ferror(file.get()) != 0) throw failure(path);
  return data;
}

void write_file(const std::filesystem::path& path, const std::string& data) {
  File file = open(path, "wb");
  if (std::fwrite(data.data(), 1, data.size(), file.get()) != data.size()) throw failure(path);
  if (std::fclose(file.release()) != 0) throw failure(path);
}

std::filesystem::path resolved(const std::filesystem::path& path) {
  namespace fs = std::filesystem;
  constexpr int MOST_LINKS = 40;  // as systems have it; "a -> gone/../a" leads to itself for ever
  fs::path target = fs::weakly_canonical(fs::absolute(path));
  for (int links = 0; fs::is_symlink(fs::symlink_status(target)); ++links) {  // to nothing yet
    if (links == MOST_LINKS) throw Error(os_error_text(ELOOP, path.string()));
    target = fs::weakly_canonical(target.parent_path() / fs::read_symlink(target));
  }
  return target;
}

}  // namespace zv
