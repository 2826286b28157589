// Fonts from files, hinted and anti-aliased, laid out glyph by glyph.
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MODULE_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <type_traits>

#include "base/error.h"
#include "base/python_text.h"
#include "base/unicode.h"
#include "image/font.h"
#include "image/picture.h"

namespace zv::image {
namespace {

// The library's memory comes from where ours does: what it makes of missing memory itself is
// another font at best.
void* allocate(FT_Memory, long size) {
  try {
    return ::operator new(static_cast<std::size_t>(size));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void release(FT_Memory, void* block) {
  ::operator delete(block);
}
void* reallocate(FT_Memory memory, long before, long size, void* block) {
  void* const moved = allocate(memory, size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, block, static_cast<std::size_t>(std::min(before, size)));
  release(memory, block);
  return moved;
}

struct CloseLibrary {
  void operator()(FT_Library library) const { FT_Done_Library(library); }
};
struct CloseFace {
  void operator()(FT_Face face) const { FT_Done_Face(face); }
};

// FreeType counts in 64ths of a pixel.
int floor_to_pixel(FT_Pos position) {
  return static_cast<int>(position >> 6);
}
int round_to_pixel(FT_Pos position) {
  return floor_to_pixel(position + 32);
}
int ceil_to_pixel(FT_Pos position) {
  return floor_to_pixel(position + 63);
}

class FreeTypeFont : public Font {
 public:
  FreeTypeFont(const std::filesystem::path& path, unsigned pixels) {
    FT_Library library = nullptr;
    if (FT_New_Library(&memory_, &library) != 0) throw Error("the font library does not start");
    library_.reset(library);
    FT_Add_Default_Modules(library);
    FT_Set_Default_Properties(library);
    FT_Face face = nullptr;
    if (FT_New_Face(library, path.string().c_str(), 0, &face) != 0) {
      throw Error("cannot open font " + quoted_text(path.string()));
    }
    face_.reset(face);
    if (FT_Set_Pixel_Sizes(face, 0, pixels) != 0) {
      throw Error("font without outlines " + quoted_text(path.string()));
    }
  }

  TextBox text_box(std::string_view utf8) const override {
    TextBox box{0, 0, 0, 0};
    bool first = true;
    const FT_Pos end = for_each_glyph(utf8, [&](int x) {
      extend(box, glyph_box(x), first);
      first = false;
    });
    box.right = std::max(box.right, round_to_pixel(end));
    return box;
  }

  TextMask render(std::string_view utf8) const override {
    TextMask mask(text_box(utf8));
    for_each_glyph(utf8, [&](int x) {
      check(FT_Render_Glyph(face_->glyph, FT_RENDER_MODE_NORMAL));
      add_bitmap(mask, x);
    });
    return mask;
  }

 private:
  // After a failure the glyph is in no state to be looked at.
  static void check(FT_Error error) {
    if (error != 0)
      throw Error("a label cannot be drawn (font error " + std::to_string(error) + ")");
  }

  int ascender() const { return round_to_pixel(face_->size->metrics.ascender); }

  // Visits each glyph, loaded and hinted, with its place; answers where the line ends, in 64ths.
  FT_Pos for_each_glyph(std::string_view utf8, const std::function<void(int)>& visit) const {
    FT_Pos x = 0;
    FT_UInt previous = 0;
    for (std::size_t at = 0; at < utf8.size();) {
      const FT_UInt glyph = FT_Get_Char_Index(face_.get(), next_code_point(utf8, at));
      x += kerning(previous, glyph);
      check(FT_Load_Glyph(face_.get(), glyph, FT_LOAD_DEFAULT | FT_LOAD_NO_BITMAP));
      visit(round_to_pixel(x));
      x += face_->glyph->metrics.horiAdvance;
      previous = glyph;
    }
    return x;
  }

  // The engine's image library takes a pair's kerning in pixels for 64ths; equal label widths
  // matter more here than a better spacing.
  FT_Pos kerning(FT_UInt left, FT_UInt right) const {
    FT_Vector delta{};
    if (left == 0 || right == 0 || !FT_HAS_KERNING(face_.get())) return 0;
    if (FT_Get_Kerning(face_.get(), left, right, FT_KERNING_DEFAULT, &delta) != 0) return 0;
    return round_to_pixel(delta.x);
  }

  TextBox glyph_box(int x) const {
    FT_BBox box{};
    FT_Outline_Get_CBox(&face_->glyph->outline, &box);
    return {x + floor_to_pixel(box.xMin), ascender() - ceil_to_pixel(box.yMax),
            x + ceil_to_pixel(box.xMax), ascender() - floor_to_pixel(box.yMin)};
  }

  static void extend(TextBox& box, const TextBox& glyph, bool first) {
    box.left = std::min(box.left, glyph.left);
    box.right = std::max(box.right, glyph.right);
    box.top = first ? glyph.top : std::min(box.top, glyph.top);
    box.bottom = first ? glyph.bottom : std::max(box.bottom, glyph.bottom);
  }

  void add_bitmap(TextMask& mask, int x) const {
    const FT_Bitmap& bitmap = face_->glyph->bitmap;
    const int left = x + face_->glyph->bitmap_left - mask.box.left;
    const int top = ascender() - face_->glyph->bitmap_top - mask.box.top;
    for (int row = 0; row < static_cast<int>(bitmap.rows); ++row) {
      for (int column = 0; column < static_cast<int>(bitmap.width); ++column) {
        const int to_x = left + column;
        const int to_y = top + row;
        if (to_x < 0 || to_y < 0 || to_x >= mask.box.width() || to_y >= mask.box.height()) continue;
        std::uint8_t& to = mask.coverage[mask.index(to_x, to_y)];
        // Where neighbours overlap, each lets through its share of the ground.
        const unsigned ink = bitmap.buffer[row * bitmap.pitch + column];
        to = static_cast<std::uint8_t>(255 - scale_by(255U - to, 255U - ink));
      }
    }
  }

  FT_MemoryRec_ memory_{nullptr, allocate, release, reallocate};
  std::unique_ptr<std::remove_pointer_t<FT_Library>, CloseLibrary> library_;
  std::unique_ptr<std::remove_pointer_t<FT_Face>, CloseFace> face_;
};

}  // namespace

std::unique_ptr<Font> load_font(const std::filesystem::path& path, unsigned pixels) {
  return std::make_unique<FreeTypeFont>(path, pixels);
}

}  // namespace zv::image
