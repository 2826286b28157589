#include <windows.h>

#include <filesystem>

#include "base/system.h"

namespace zv {

namespace fs = std::filesystem;

std::string system_name() {
  return "Windows";
}

std::string program_folder() {
  wchar_t buffer[32768];
  const DWORD length = GetModuleFileNameW(nullptr, buffer, 32768);
  std::error_code error;
  const fs::path program = fs::canonical(fs::path(buffer, buffer + length), error);
  return error ? std::string() : program.parent_path().string();
}

std::vector<std::string> interpreter_names() {
  return {"python.exe", "python3.exe"};
}

std::string scripts_folder(const std::string& environment) {
  return environment + "/Scripts";
}

char path_list_separator() {
  return ';';
}

bool runnable(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

}  // namespace zv
