#include "image/output_file.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "image/file_error.h"

namespace zv::image {

OutputFile::OutputFile(std::filesystem::path path) : path_(std::move(path)) {
  std::error_code ignored;
  created_ = !std::filesystem::exists(path_, ignored);
  errno = 0;
  stream_.open(path_, std::ios::out | std::ios::binary | std::ios::trunc);
  if (!stream_) throw file_error(errno, path_);
}

void OutputFile::write(const void* from, std::size_t count) noexcept {
  if (error_number_ != 0) return;
  errno = 0;
  stream_.write(static_cast<const char*>(from), static_cast<std::streamsize>(count));
  if (!stream_) return note_failure();
  position_ += count;
  size_ = std::max(size_, position_);
}

void OutputFile::seek(std::uint64_t position) noexcept {
  if (error_number_ != 0 || position == position_) return;
  errno = 0;
  stream_.seekp(static_cast<std::streamoff>(position));
  if (!stream_) return note_failure();
  position_ = position;
}

void OutputFile::note_failure() noexcept {
  error_number_ = errno != 0 ? errno : EIO;
}

void OutputFile::check() const {
  if (error_number_ != 0) throw file_error(error_number_, path_);
}

void OutputFile::finish() {
  errno = 0;
  stream_.close();
  if (!stream_ && error_number_ == 0) note_failure();
  check();
}

void OutputFile::discard() noexcept {
  stream_.close();
  std::error_code ignored;
  // The target of a link is what was created, never the link itself.
  const auto real = std::filesystem::canonical(path_, ignored);
  if (created_ && !ignored) std::filesystem::remove(real, ignored);
}

}  // namespace zv::image
