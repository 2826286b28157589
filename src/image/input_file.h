// One image file open for reading. Reading never throws, as it is called from inside C codecs;
// a failure of the system is remembered and thrown by check().
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace zv::image {

class InputFile {
 public:
  // Throws Error when the file cannot be opened.
  explicit InputFile(std::filesystem::path path);

  // Returns how many bytes came; fewer than asked only at the end or after a failure.
  std::size_t read(void* to, std::size_t count) noexcept;
  bool seek(std::uint64_t position) noexcept;
  std::uint64_t position() const noexcept { return position_; }
  std::uint64_t size() const noexcept { return size_; }

  // True once a read asked for more than the file holds.
  bool ran_out() const noexcept { return ran_out_; }
  // Throws Error when the system failed to read.
  void check() const;
  const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
  std::ifstream stream_;
  std::uint64_t position_ = 0;
  std::uint64_t size_ = 0;
  int error_number_ = 0;
  bool ran_out_ = false;
};

}  // namespace zv::image
