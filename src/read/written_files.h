// The files of one run, to tell the user when it writes over one of them.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace zv::read {

class WrittenFiles {
 public:
  explicit WrittenFiles(const std::vector<std::filesystem::path>& inputs);

  // To be called once a file is written; `content` says what it holds now. The line for the user
  // when something of this run is lost by that, else nothing.
  std::string add(const std::filesystem::path& target, const std::string& content);

 private:
  std::map<std::filesystem::path, std::string> contents_;  // by the resolved name
};

}  // namespace zv::read
