#include <io.h>
#include <shellapi.h>
#include <windows.h>

#include <cstdlib>

#include "cli/console.h"

namespace zv::cli {
namespace {

std::string utf8(const wchar_t* wide) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(size > 0 ? size - 1 : 0), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  return text;
}

}  // namespace

void prepare_console() {
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleCP(CP_UTF8);
}

std::vector<std::string> command_line_words(int, char**) {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> words;
  for (int i = 1; i < count; ++i) words.push_back(utf8(wide[i]));
  LocalFree(wide);
  return words;
}

bool is_terminal(std::FILE* stream) {
  return _isatty(_fileno(stream)) != 0;
}

void end_unread() {
  std::_Exit(1);
}

}  // namespace zv::cli
