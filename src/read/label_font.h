// Which font the labels on annotated copies are written in.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

#include "image/font.h"

namespace zv::read {

// The fonts to try on a system named "Windows", "Darwin" or anything else, best first.
std::vector<std::filesystem::path> font_candidates(std::string_view system_name);

// The first candidate that loads at `pixels`, else the built-in font in its own size.
std::unique_ptr<image::Font> first_font(const std::vector<std::filesystem::path>& candidates,
                                        unsigned pixels);

// The label font of the system this program runs on.
std::unique_ptr<image::Font> _get_cli_font(unsigned font_size = 16);

}  // namespace zv::read
