#include <sys/utsname.h>
#include <unistd.h>

#include <filesystem>
#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

#include "base/system.h"

namespace zv {

namespace fs = std::filesystem;

std::string system_name() {
  utsname name{};
  return uname(&name) == 0 ? name.sysname : "";
}

std::string program_folder() {
  std::error_code error;
#ifdef __APPLE__
  char buffer[4096];
  std::uint32_t size = sizeof buffer;
  if (_NSGetExecutablePath(buffer, &size) != 0) return {};
  const fs::path program = fs::canonical(buffer, error);
#else
  const fs::path program = fs::canonical("/proc/self/exe", error);
#endif
  return error ? std::string() : program.parent_path().string();
}

std::vector<std::string> interpreter_names() {
  return {"python", "python3"};
}

std::string scripts_folder(const std::string& environment) {
  return environment + "/bin";
}

char path_list_separator() {
  return ':';
}

bool runnable(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
}

}  // namespace zv
