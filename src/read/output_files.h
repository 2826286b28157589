// Where the files that one run writes go, and what they write over.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace zv::read {

// The path of the annotated copy of an image: with one image as the user gave it; with several
// "detected_<name>" in the folder `output`, or beside `output` with its suffix when that is none.
std::filesystem::path output_path(const std::string& output, const std::filesystem::path& image,
                                  std::size_t image_count);

// The files of one run, to tell the user when it writes over one of them.
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
