// Where the annotated copy of an image goes.
#pragma once

#include <filesystem>
#include <string>

namespace zv::read {

// With one image the path as the user gave it; with several "detected_<name>" in the folder
// `output`, or beside `output` with its suffix when that is no folder.
std::filesystem::path output_path(const std::string& output, const std::filesystem::path& image,
                                  std::size_t image_count);

}  // namespace zv::read
