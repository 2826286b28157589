// Decodes COUNT damaged variants of an image file, the same ones in every run, through the scratch
// file named last. Ends with status 0 when each gave a picture or an Error, and writes how many
// did.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>

#include "base/error.h"
#include "image/image_file.h"

namespace {

using Bytes = std::string;
using Random = std::mt19937;

std::size_t below(Random& random, std::size_t limit) {
  return limit == 0 ? 0 : static_cast<std::size_t>(random()) % limit;
}

// Headers decide more than pixels do, so half of the damage goes there.
std::size_t any_place(Random& random, const Bytes& bytes) {
  const std::size_t head = std::min<std::size_t>(bytes.size(), 160);
  return below(random, random() % 2 == 0 ? head : bytes.size());
}

void damage_once(Random& random, Bytes& bytes) {
  constexpr unsigned char kEdges[] = {0x00, 0x01, 0x7F, 0x80, 0xFE, 0xFF};
  const std::size_t at = any_place(random, bytes);
  const std::size_t length = 1 + below(random, 16);
  switch (random() % 6) {
    case 0:
      bytes[at] = static_cast<char>(kEdges[below(random, std::size(kEdges))]);
      break;
    case 1:
      bytes[at] = static_cast<char>(bytes[at] ^ (1 << random() % 8));
      break;
    case 2:
      bytes[at] = static_cast<char>(random());
      break;
    case 3:
      bytes.erase(at, length);
      break;
    case 4:
      bytes.insert(at, bytes.substr(any_place(random, bytes), length));
      break;
    default:
      bytes.resize(bytes.size() - below(random, bytes.size() / 2));
      break;
  }
}

Bytes damaged(Random& random, Bytes bytes) {
  for (std::size_t left = 1 + below(random, 5); left > 0 && bytes.size() > 8; --left) {
    damage_once(random, bytes);
  }
  return bytes;
}

bool decodes(const char* path) {
  try {
    const auto picture = zv::image::decode_file(path).picture;
    if (picture.rgb.size() != picture.stride() * static_cast<std::size_t>(picture.height)) {
      std::abort();
    }
    return true;
  } catch (const zv::Error& error) {
    if (std::string(error.what()).find('\n') != std::string::npos) std::abort();
    return false;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  std::ifstream file(argv[1], std::ios::binary);
  const Bytes original{std::istreambuf_iterator<char>(file), {}};
  Random random(static_cast<Random::result_type>(original.size()));
  int pictures = 0;
  const int count = std::atoi(argv[2]);
  for (int i = 0; i < count; ++i) {
    std::ofstream(argv[3], std::ios::binary) << damaged(random, original);
    pictures += decodes(argv[3]) ? 1 : 0;
  }
  std::cout << pictures << " of " << count << '\n';
}
