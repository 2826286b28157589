// Follows a growing text file like `tail -f`, for systems that have no such program.
#pragma once

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>

namespace zv::server {

class LogFollower {
 public:
  // Begins with the last ten lines.
  LogFollower(std::filesystem::path log, std::ostream& out);

  // Copies what was added since the last time. Of a log that shrank because it was rotated, first
  // the rest of what is now in the file with ".1" behind its name.
  void copy_new();

 private:
  void copy_from(const std::filesystem::path& path);
  void remember(std::string_view text);
  bool continues(const std::filesystem::path& path) const;

  std::filesystem::path log_;
  std::ostream& out_;
  std::uintmax_t copied_ = 0;
  std::string last_;  // the end of what was copied
};

// Until Ctrl+C, which ends it with Interrupted.
void follow_log(const std::filesystem::path& log, std::ostream& out);

}  // namespace zv::server
