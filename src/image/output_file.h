// One image file open for writing. Writing never throws, as it is called from inside C codecs;
// the first failure is remembered, later writes do nothing, and finish() throws it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace zv::image {

class OutputFile {
 public:
  // Throws Error when the file cannot be created.
  explicit OutputFile(std::filesystem::path path);

  void write(const void* from, std::size_t count) noexcept;
  void seek(std::uint64_t position) noexcept;
  std::uint64_t position() const noexcept { return position_; }
  std::uint64_t size() const noexcept { return size_; }

  // Throws Error when a write has failed.
  void check() const;
  // Closes the file; throws Error when any byte did not reach it.
  void finish();
  // Closes the file and, when this object created it, removes it.
  void discard() noexcept;

 private:
  void note_failure() noexcept;

  std::filesystem::path path_;
  bool created_ = false;
  std::ofstream stream_;
  std::uint64_t position_ = 0;
  std::uint64_t size_ = 0;
  int error_number_ = 0;
};

}  // namespace zv::image
