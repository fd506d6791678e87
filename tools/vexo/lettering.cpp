// SPDX-License-Identifier: Apache-2.0
#include "lettering.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <unistd.h>

#include <algorithm>
#include <array>

#include "error.h"

namespace vexo {
namespace {

constexpr const char *kFonts[] = {
    "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
    "/usr/share/fonts/dejavu-sans-fonts/DejaVuSans.ttf",
    "/usr/share/fonts/TTF/DejaVuSans.ttf",
    "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf",
    "/usr/share/fonts/truetype/liberation2/LiberationSans-Regular.ttf",
    "/usr/share/fonts/truetype/noto/NotoSans-Regular.ttf",
    "/usr/share/fonts/truetype/freefont/FreeSans.ttf",
    "/System/Library/Fonts/Helvetica.ttc",
    "/system/fonts/Roboto-Regular.ttf"};

std::string found_font() {
  for (const char *const font : kFonts) {
    if (access(font, R_OK) == 0) return font;
  }
  throw Error("no font was found: name one by --font");
}

// Of white over what is there.
uint8_t blend(uint8_t below, int cover) {
  return static_cast<uint8_t>(below + (255 - below) * cover / 255);
}

}  // namespace

struct Lettering::Font {
  FT_Library library = nullptr;
  FT_Face face = nullptr;

  ~Font() {
    FT_Done_Face(face);
    FT_Done_FreeType(library);
  }

  // A glyph as 8-bit coverage, in the face's slot.
  FT_GlyphSlot glyph(char c) const {
    const auto code = static_cast<FT_ULong>(static_cast<unsigned char>(c));
    if (FT_Load_Char(face, code, FT_LOAD_RENDER) != 0) {
      throw Error("the font cannot be drawn");
    }
    return face->glyph;
  }
};

Lettering::Lettering(const std::string &font, int pixels)
    : font_(std::make_unique<Font>()) {
  const std::string name = font.empty() ? found_font() : font;
  if (FT_Init_FreeType(&font_->library) != 0) {
    throw Error("FreeType does not start");
  }
  if (FT_New_Face(font_->library, name.c_str(), 0, &font_->face) != 0 ||
      FT_Set_Pixel_Sizes(font_->face, 0, static_cast<FT_UInt>(pixels)) != 0) {
    throw Error("cannot read the font " + name);
  }
}

Lettering::~Lettering() = default;

void Lettering::draw(const std::string &text, const Frame &frame, int right,
                     int bottom) const {
  const FT_Size_Metrics &metrics = font_->face->size->metrics;
  const int ascent = static_cast<int>(metrics.ascender >> 6);
  const int descent = static_cast<int>(-metrics.descender >> 6);
  int width = 0;
  for (const char c : text) {
    width += static_cast<int>(font_->glyph(c)->advance.x >> 6);
  }
  const int margin = ascent / 4;
  const int top = std::max(bottom - ascent - descent - margin, 0);
  const int left = std::max(right - width - 2 * margin, 0);
  for (int y = top; y < bottom; ++y) {
    uint8_t *const row = frame.row(0, y);
    for (int x = 3 * left; x < 3 * right; ++x) {
      row[x] = static_cast<uint8_t>(row[x] / 3);
    }
  }
  int pen = left + margin;
  const int line = bottom - descent - margin / 2;
  for (const char c : text) {
    const FT_GlyphSlot glyph = font_->glyph(c);
    const FT_Bitmap &bitmap = glyph->bitmap;
    for (unsigned i = 0; i < bitmap.rows; ++i) {
      const int y = line - glyph->bitmap_top + static_cast<int>(i);
      if (y < top || y >= bottom) continue;
      const uint8_t *const cover =
          bitmap.buffer + static_cast<ptrdiff_t>(i) * bitmap.pitch;
      for (unsigned k = 0; k < bitmap.width; ++k) {
        const int x = pen + glyph->bitmap_left + static_cast<int>(k);
        if (x < left || x >= right) continue;
        uint8_t *const pixel = frame.row(0, y) + ptrdiff_t{3} * x;
        for (int channel = 0; channel < 3; ++channel) {
          pixel[channel] = blend(pixel[channel], cover[k]);
        }
      }
    }
    pen += static_cast<int>(glyph->advance.x >> 6);
  }
}

}  // namespace vexo
