// Draws the result records that standard input holds as JSON on the image named first, and writes
// "width height\n" and its RGB bytes to standard output. An error is one line and status 1.
#include <exception>
#include <iostream>
#include <iterator>
#include <string>

#include "base/json.h"
#include "image/image_file.h"
#include "read/draw_results.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    const std::string text{std::istreambuf_iterator<char>(std::cin), {}};
    const zv::Value records = zv::parse_json(text);
    std::vector<zv::read::Plate> plates;
    for (const zv::Value& record : *records.as<zv::List>()) {
      plates.emplace_back(*record.as<zv::Map>());
    }
    const auto picture = zv::read::draw_results(zv::image::decode_file(argv[1]).picture, plates);
    std::cout << picture.width << ' ' << picture.height << '\n';
    std::cout.write(reinterpret_cast<const char*>(picture.rgb.data()),
                    static_cast<std::streamsize>(picture.rgb.size()));
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
