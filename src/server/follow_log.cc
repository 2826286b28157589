#include "server/follow_log.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <thread>

#include "base/files.h"
#include "base/interrupt.h"

namespace zv::server {
namespace {

constexpr int LINES_AT_FIRST = 10;
constexpr std::chrono::milliseconds PAUSE(100);
constexpr std::size_t REMEMBERED = 1024;  // bytes by which a log is known again

// Where the last lines begin.
std::size_t start_of_last_lines(std::string_view text, int count) {
  std::size_t at = text.ends_with('\n') ? text.size() - 1 : text.size();
  for (; at > 0 && count > 0; --count) {
    at = text.rfind('\n', at - 1);
    if (at == std::string_view::npos) return 0;
  }
  return at == 0 ? 0 : at + 1;
}

}  // namespace

LogFollower::LogFollower(std::filesystem::path log, std::ostream& out)
    : log_(std::move(log)), out_(out) {
  const std::string text = read_file(log_);
  out_ << text.substr(start_of_last_lines(text, LINES_AT_FIRST)) << std::flush;
  copied_ = text.size();
  remember(text);
}

void LogFollower::copy_new() {
  std::error_code missing;
  const std::uintmax_t size = std::filesystem::file_size(log_, missing);
  if (missing || size == copied_) return;
  if (size < copied_) {
    const std::string rotated = log_.string() + ".1";
    if (continues(rotated)) copy_from(rotated);
    copied_ = 0;
    last_.clear();
  }
  copy_from(log_);
  out_.flush();
}

// Held open only for a moment, so that the log can be renamed meanwhile on every system.
void LogFollower::copy_from(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(copied_));
  std::array<char, 1 << 14> chunk{};
  while (file.read(chunk.data(), chunk.size()), file.gcount() > 0) {
    const std::string_view text(chunk.data(), static_cast<std::size_t>(file.gcount()));
    out_ << text;
    copied_ += text.size();
    remember(text);
  }
}

void LogFollower::remember(std::string_view text) {
  last_ += text.substr(text.size() - std::min(text.size(), REMEMBERED));
  if (last_.size() > REMEMBERED) last_.erase(0, last_.size() - REMEMBERED);
}

// Whether the file holds what was copied last, where it was copied from.
bool LogFollower::continues(const std::filesystem::path& path) const {
  std::ifstream file(path, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(copied_ - last_.size()));
  std::string there(last_.size(), '\0');
  file.read(there.data(), static_cast<std::streamsize>(there.size()));
  return file && there == last_;
}

void follow_log(const std::filesystem::path& log, std::ostream& out) {
  LogFollower follower(log, out);
  while (true) {
    check_interrupt();
    follower.copy_new();
    std::this_thread::sleep_for(PAUSE);
  }
}

}  // namespace zv::server
