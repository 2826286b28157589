#include "read/label_font.h"

#include "base/error.h"
#include "base/system.h"

namespace zv::read {

std::vector<std::filesystem::path> font_candidates(std::string_view system_name) {
  if (system_name == "Windows") {
    return {"C:/Windows/Fonts/arial.ttf", "C:/Windows/Fonts/consola.ttf"};
  }
  if (system_name == "Darwin") {
    return {"/System/Library/Fonts/Helvetica.ttc", "/System/Library/Fonts/SFNSMono.ttf"};
  }
  return {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
          "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf"};
}

std::unique_ptr<image::Font> first_font(const std::vector<std::filesystem::path>& candidates,
                                        unsigned pixels) {
  for (const auto& path : candidates) {
    try {
      return image::load_font(path, pixels);
    } catch (const Error&) {
      continue;
    }
  }
  return image::builtin_font();
}

std::unique_ptr<image::Font> _get_cli_font(unsigned font_size) {
  return first_font(font_candidates(system_name()), font_size);
}

}  // namespace zv::read
