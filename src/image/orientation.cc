#include "image/orientation.h"

#include <algorithm>
#include <cstddef>

namespace zv::image {
namespace {

// Where the stored pixel that becomes (x, y) of the upright picture lies: swapped exchanges the
// axes first, then the stored axes are read backwards where mirrored.
struct Turn {
  bool swapped;
  bool mirror_x;
  bool mirror_y;
};

// Indexed by EXIF orientation.
constexpr Turn kTurns[9] = {
    {false, false, false},  // (none)
    {false, false, false},  // upright
    {false, true, false},   // mirrored
    {false, true, true},    // upside down
    {false, false, true},   // upside down and mirrored
    {true, false, false},   // mirrored, lying on its side
    {true, false, true},    // lying, top to the right
    {true, true, true},     // mirrored, lying on the other side
    {true, true, false},    // lying, top to the left
};

// Small enough for the rows that a turned tile is gathered from to stay in the cache.
constexpr int kTile = 32;

// Where the upright pixel (0, 0) is stored, and how far apart its neighbours to the right and
// below.
struct Source {
  const std::uint8_t* corner;
  std::ptrdiff_t right;
  std::ptrdiff_t below;
};

void copy_tile(const Source& source, Picture& to, int left, int top) {
  const int end_x = std::min(left + kTile, to.width);
  const int end_y = std::min(top + kTile, to.height);
  for (int y = top; y < end_y; ++y) {
    const std::uint8_t* from = source.corner + y * source.below + left * source.right;
    std::uint8_t* pixel = to.pixel(left, y);
    for (int x = left; x < end_x; ++x, from += source.right) pixel = std::copy_n(from, 3, pixel);
  }
}

Source source_of(const Picture& stored, const Turn& turn) {
  const auto stride = static_cast<std::ptrdiff_t>(stored.stride());
  const std::ptrdiff_t across = turn.mirror_x ? -3 : 3;
  const std::ptrdiff_t down = turn.mirror_y ? -stride : stride;
  const std::uint8_t* corner =
      stored.row(turn.mirror_y ? stored.height - 1 : 0) + (turn.mirror_x ? stride - 3 : 0);
  return turn.swapped ? Source{corner, down, across} : Source{corner, across, down};
}

std::uint64_t dimension(int length) {
  return static_cast<std::uint64_t>(length);
}

}  // namespace

Picture upright(Picture stored, int orientation) {
  if (orientation < 2 || orientation > 8) return stored;
  const Turn turn = kTurns[orientation];
  Picture result = turn.swapped ? blank_picture(dimension(stored.height), dimension(stored.width))
                                : blank_picture(dimension(stored.width), dimension(stored.height));
  const Source source = source_of(stored, turn);
  for (int y = 0; y < result.height; y += kTile) {
    for (int x = 0; x < result.width; x += kTile) copy_tile(source, result, x, y);
  }
  return result;
}

}  // namespace zv::image
