// One image file being made in memory. Writing never throws, as it is called from inside C codecs;
// the first failure is remembered, later writes do nothing, and finish() throws it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace zv::image {

class OutputFile {
 public:
  explicit OutputFile(std::filesystem::path path) : path_(std::move(path)) {}

  void write(const void* from, std::size_t count) noexcept;
  void seek(std::uint64_t position) noexcept { position_ = position; }
  std::uint64_t position() const noexcept { return position_; }
  std::uint64_t size() const noexcept { return data_.size(); }

  // Throws Error when a write has failed.
  void check() const;
  // Writes the file; throws Error when any byte did not reach it.
  void finish();

 private:
  std::filesystem::path path_;
  std::string data_;
  std::uint64_t position_ = 0;
  bool failed_ = false;
};

}  // namespace zv::image
