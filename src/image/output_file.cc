#include "image/output_file.h"

#include <algorithm>
#include <exception>

#include "base/error.h"
#include "base/files.h"

namespace zv::image {

void OutputFile::write(const void* from, std::size_t count) noexcept {
  try {
    data_.resize(std::max<std::uint64_t>(data_.size(), position_ + count));
    std::copy_n(static_cast<const char*>(from), count,
                data_.begin() + static_cast<long>(position_));
    position_ += count;
  } catch (const std::exception&) {
    failed_ = true;
  }
}

void OutputFile::check() const {
  if (failed_) throw Error("not enough memory for this image");
}

void OutputFile::finish() {
  check();
  write_file(path_, data_);
}

}  // namespace zv::image
