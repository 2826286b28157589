// Draws on the image named first and writes "width height\n" and its RGB bytes to standard output.
// One command per line of standard input:
//   box LEFT TOP RIGHT BOTTOM | fill LEFT TOP RIGHT BOTTOM | text X Y FONT-FILE PIXELS TEXT...
//   measure FONT-FILE PIXELS TEXT...   (writes "left top right bottom" to standard error)
#include <cstdint>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

#include "image/canvas.h"
#include "image/image_file.h"

namespace {

using namespace zv::image;

std::string rest_of(std::istream& line) {
  std::string text;
  std::getline(line >> std::ws, text);
  return text;
}

void run(const std::string& text, Canvas& canvas) {
  std::istringstream line(text);
  std::string command, file;
  std::int64_t x = 0, y = 0, right = 0, bottom = 0;
  unsigned pixels = 0;
  line >> command;
  if (command == "box" && line >> x >> y >> right >> bottom) {
    canvas.outline_rectangle({x, y, right, bottom}, {0, 255, 0}, 2);
  } else if (command == "fill" && line >> x >> y >> right >> bottom) {
    canvas.fill_rectangle({x, y, right, bottom}, {0, 255, 0});
  } else if (command == "text" && line >> x >> y >> file >> pixels) {
    canvas.draw_text(x, y, rest_of(line), *load_font(file, pixels), {0, 0, 0});
  } else if (command == "measure" && line >> file >> pixels) {
    const TextBox box = load_font(file, pixels)->text_box(rest_of(line));
    std::cerr << box.left << ' ' << box.top << ' ' << box.right << ' ' << box.bottom << '\n';
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    auto picture = decode_file(argv[1]).picture;
    Canvas canvas(picture);
    for (std::string line; std::getline(std::cin, line);) run(line, canvas);
    std::cout << picture.width << ' ' << picture.height << '\n';
    std::cout.write(reinterpret_cast<const char*>(picture.rgb.data()),
                    static_cast<std::streamsize>(picture.rgb.size()));
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
