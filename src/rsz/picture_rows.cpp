// SPDX-License-Identifier: Apache-2.0
#include "rsz/picture_rows.h"

#include "common/copy.h"
#include "common/format.h"
#include "rsz/scale_rows.h"

namespace lox {

PictureRows::PictureRows(const vexo_img &src, const vexo_img &dst,
                         uint8_t *scratch)
    : src_(src),
      dst_(dst),
      scratch_(scratch),
      layout_(layout_of(src.format)),
      words_(src.format == VEXO_FMT_P010LE),
      planes_(words_ ? 2 : layout_.planes) {}

int32_t PictureRows::ratio(int p) const {
  return p > 0 && has_half_columns(src_.format) ? 2 : 1;
}

int32_t PictureRows::start(int32_t x, int32_t count) {
  const int32_t left = dst_.width[0] - x;
  if (count > kColumns) count = kColumns;
  for (;;) {
    if (count >= left) {
      count = left;
    } else {
      count = count / 64 * 64;
    }
    int32_t done = count;
    uint8_t *scratch = scratch_;
    for (int p = 0; p < planes_; ++p) {
      const Plane plane = plane_of(src_, dst_, p);
      const int32_t first = x / ratio(p);
      const int32_t columns =
          count == left ? plane.dst_width - first : count / ratio(p);
      if (words_) {
        const int32_t factor = plane.src_width / plane.dst_width;
        const int64_t step = plane.src_stride & ~1;
        const int32_t unit = 2 << p;
        word_rows_[p] = {plane.src + int64_t{first} * factor * unit, step,
                         plane.src_height / plane.dst_height, factor, columns};
        continue;
      }
      const SampleType type = layout_.type[p];
      const int32_t made =
          rows_[p].start(make_job(type, Turn::kNone, plane, dst_.mode, scratch),
                         first, columns);
      if (made < columns && made * ratio(p) < done) done = made * ratio(p);
      scratch += ptrdiff_t{2} * columns * type.unit;
    }
    if (done == count) return count;
    count = done;
  }
}

void PictureRows::WordRows::next(uint8_t *dst, int32_t unit) {
  if (factor == 1) {
    copy_plane(dst, 0, src, 0, int64_t{count} * unit, 1);
  } else {
    scale_rows().box16(src, src + step, dst, unit, factor, count);
  }
  src += step * below;
}

void PictureRows::next(const vexo_img &strip) {
  for (int p = 0; p < planes_; ++p) {
    uint8_t *dst = strip.plane[p];
    for (int32_t y = 0; y < strip.height[p]; ++y) {
      if (words_) {
        word_rows_[p].next(dst, 2 << p);
      } else {
        rows_[p].next(dst);
      }
      dst += strip.stride[p];
    }
  }
}

}  // namespace lox
