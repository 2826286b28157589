// Writes the shell completions and the manual page from the command table into the folder it is
// given.
#include <fstream>
#include <iostream>
#include <string>

#include "cli/command_table.h"
#include "cli/documents.h"

namespace {

bool write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  return static_cast<bool>(file.flush());
}

}  // namespace

int main(int count, char** words) {
  if (count != 2) {
    std::cerr << "usage: zv-anpr-docs FOLDER\n";
    return 2;
  }
  const std::string folder = std::string(words[1]) + "/";
  const auto& program = zv::cli::program();
  const bool written = write(folder + "zv-anpr.bash", zv::cli::bash_completion(program)) &&
                       write(folder + "_zv-anpr", zv::cli::zsh_completion(program)) &&
                       write(folder + "zv-anpr.fish", zv::cli::fish_completion(program)) &&
                       write(folder + "zv-anpr.1", zv::cli::manual_page(program, ZV_VERSION));
  if (!written) std::cerr << "zv-anpr-docs: cannot write into " << folder << "\n";
  return written ? 0 : 1;
}
