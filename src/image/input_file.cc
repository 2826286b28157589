#include "image/input_file.h"

#include <cerrno>
#include <utility>

#include "image/file_error.h"

namespace zv::image {

InputFile::InputFile(std::filesystem::path path) : path_(std::move(path)) {
  errno = 0;
  stream_.open(path_, std::ios::in | std::ios::binary);
  if (!stream_) throw file_error(errno, path_);
  stream_.seekg(0, std::ios::end);
  const auto end = stream_.tellg();
  if (end > 0) size_ = static_cast<std::uint64_t>(end);
  stream_.clear();
  stream_.seekg(0);
}

std::size_t InputFile::read(void* to, std::size_t count) noexcept {
  errno = 0;
  stream_.read(static_cast<char*>(to), static_cast<std::streamsize>(count));
  const auto got = static_cast<std::size_t>(stream_.gcount());
  if (stream_.bad()) error_number_ = errno != 0 ? errno : EIO;
  position_ += got;
  if (got < count) {
    ran_out_ = true;
    stream_.clear();
  }
  return got;
}

bool InputFile::seek(std::uint64_t position) noexcept {
  stream_.clear();
  stream_.seekg(static_cast<std::streamoff>(position));
  if (!stream_) return false;
  position_ = position;
  return true;
}

void InputFile::check() const {
  if (error_number_ != 0) throw file_error(error_number_, path_);
}

}  // namespace zv::image
