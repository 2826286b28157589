// Decodes the image named first and writes "width height\n" and its RGB bytes to standard output;
// with a second name it saves the picture there instead. An error is one line and status 1;
// a damaged picture is shown, with one line as well.
#include <cstdio>
#include <exception>
#include <iostream>

#include "image/image_file.h"

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  try {
    const auto [picture, damage] = zv::image::decode_file(argv[1]);
    if (!damage.empty()) std::cerr << damage << '\n';
    if (argc > 2) {
      zv::image::encode_file(picture, argv[2]);
      return 0;
    }
    std::cout << picture.width << ' ' << picture.height << '\n';
    std::cout.write(reinterpret_cast<const char*>(picture.rgb.data()),
                    static_cast<std::streamsize>(picture.rgb.size()));
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return std::cout.flush() ? 0 : 1;
}
