// SPDX-License-Identifier: Apache-2.0
//
// The plan: sizes and ratios, which block comes from where.
#include "dct/plan.h"

#include <climits>
#include <cstddef>
#include <cstdint>

#include "common/format.h"
#include "dct/weights.h"

namespace lox {

namespace {

// The whole part of a number that is not negative; sizes keep it far below
// 2^63.
int64_t whole(double x) { return static_cast<int64_t>(x); }

struct Side {
  int64_t src, dst;
  float ratio;

  // Samples a side of the smaller blocks, and whether there are no larger ones.
  int64_t block() const { return whole(4.0F * ratio); }
  bool even() const { return whole(400.0F * ratio) % 100 == 0; }
  int64_t span() const { return whole(ratio + 0.999); }
};

// Pads a destination size to whole blocks and the source with it. Quirk:
// fractions below 0.01 of a sample are dropped, so that ratios that are not
// exact in floating point add no sample.
Side pad(int32_t src, int32_t dst) {
  Side s = {src, dst, static_cast<float>(src) / static_cast<float>(dst)};
  if (dst % 4 != 0) {
    const int32_t p = 4 - dst % 4;
    const auto extra = static_cast<float>(p);
    s.dst += p;
    s.src += whole(s.ratio * extra);
    if (whole(100.0F * s.ratio * extra) % 100 != 0) ++s.src;
    s.ratio = static_cast<float>(s.src) / static_cast<float>(s.dst);
  }
  return s;
}

// How many blocks of either size make a side.
struct Counts {
  int64_t smaller, larger;
  int64_t all() const { return smaller + larger; }
};
Counts count_blocks(const Side &side) {
  const int64_t size = side.block();
  if (size < 1) return {0, 0};
  if (side.even()) return {side.src / size, 0};
  // a (size + 1) + b size = src and a + b = dst / 4.
  const int64_t larger = side.src - side.dst / 4 * size;
  const int64_t smaller = side.dst / 4 - larger;
  if (larger < 0 || smaller < 0) return {0, 0};
  return {smaller, larger};
}

// What is served. A side enlarged a thousand times has no span. Sizes and the
// starts of all samples are numbers of 32 bits. Bases of kMostPoints points and
// more do not fit their words. Blocks whose first weight is 0 would make any
// picture black. Tables of kMostBlocks blocks take some milliseconds to make.
constexpr int64_t kMostSize = INT32_MAX - 8;
constexpr int64_t kMostPoints = 65536;
constexpr int64_t kMostBlocks = int64_t{1} << 21;

bool is_served(const Side &across, const Side &down) {
  const auto fits = [](const Side &side) {
    return side.src <= kMostSize && side.dst <= kMostSize &&
           side.block() < kMostPoints && side.span() > 0;
  };
  if (!fits(across) || !fits(down)) return false;
  const auto width = static_cast<int32_t>(across.block());
  const auto height = static_cast<int32_t>(down.block());
  return dct_weight(width + 1, height + 1, 0.25F) > 0 &&
         count_blocks(across).all() * count_blocks(down).all() <= kMostBlocks;
}

// The size of a plane of the source that blocks are taken from.
struct Size {
  int32_t width, height;
};
Size source_size(const vexo_img &src, int32_t plane, int32_t prescale) {
  if (prescale == 0) return {src.width[plane], src.height[plane]};
  // Quirk: factor 2 rounds down to even, factor 4 up, because callers read
  // these sizes in the context.
  const int32_t width = prescale == 2
                            ? src.width[0] / 2 / 2 * 2
                            : (src.width[0] / 4 + src.width[0] / 4 % 2);
  const int32_t height = src.height[0] / prescale;
  return plane == 0 ? Size{width, height}
                    : Size{width / 2, src.height[0] / (2 * prescale)};
}

void plan_plane(const vexo_img *pair, vexo_rsz_new_context *c, int32_t plane) {
  const vexo_img &src = pair[0];
  const vexo_img &dst = pair[1];
  const int32_t factor = c->prescale == 0 ? 1 : c->prescale;
  const bool pairs = plane == 1;
  c->src_stride[plane] = src.stride[plane] / factor / (pairs ? 2 : 1);
  c->src_rows[plane] = src.height[plane] / factor;
  if (has_chroma_pairs(dst.format) || dst.format == VEXO_FMT_YUV420) {
    const bool halved = pairs && has_chroma_pairs(dst.format);
    c->dst_stride[plane] = dst.stride[plane] / (halved ? 2 : 1);
    c->dst_rows[plane] = dst.buf_height[plane];
  }

  const Size size = source_size(src, plane, c->prescale);
  plan_blocks(c, plane, size.width, size.height, dst.width[plane],
              dst.height[plane]);
}

}  // namespace

void plan_blocks(vexo_rsz_new_context *c, int32_t plane, int32_t src_width,
                 int32_t src_height, int32_t dst_width, int32_t dst_height) {
  if (src_width < 1 || src_height < 1 || dst_width < 1 || dst_height < 1) {
    return;
  }
  const Side across = pad(src_width, dst_width);
  const Side down = pad(src_height, dst_height);
  if (!is_served(across, down)) return;
  c->src_width[plane] = static_cast<int32_t>(across.src);
  c->src_height[plane] = static_cast<int32_t>(down.src);
  c->dst_width[plane] = static_cast<int32_t>(across.dst);
  c->dst_height[plane] = static_cast<int32_t>(down.dst);
  c->horizontal_ratio[plane] = across.ratio;
  c->vertical_ratio[plane] = down.ratio;
  c->horizontal_span[plane] = static_cast<int32_t>(across.span());
  c->vertical_span[plane] = static_cast<int32_t>(down.span());
  for (int32_t type = 0; type < 4; ++type) {
    const auto width = static_cast<int32_t>(across.block()) + type % 2;
    const auto height = static_cast<int32_t>(down.block()) + type / 2;
    c->block_width[plane][type] = width;
    c->block_height[plane][type] = height;
    c->horizontal_shift[plane][type] = 4 * c->horizontal_span[plane] - width;
    c->vertical_shift[plane][type] = 4 * c->vertical_span[plane] - height;
    for (int i = 0; i < 16; ++i) {
      const int odd = i / 4 % 2 + i % 2;
      const float factor = odd == 0 ? 0.25F : odd == 1 ? 0.3162F : 0.4F;
      c->weights[plane][type][i] = dct_weight(width, height, factor);
    }
  }
  c->types[plane] =
      down.even() ? (across.even() ? 1 : 2) : (across.even() ? 3 : 4);
  const Counts rows = count_blocks(down);
  c->short_rows[plane] = static_cast<int32_t>(rows.smaller);
  c->tall_rows[plane] = static_cast<int32_t>(rows.larger);
  const Counts columns = count_blocks(across);
  c->narrow_columns[plane] = static_cast<int32_t>(columns.smaller);
  c->wide_columns[plane] = static_cast<int32_t>(columns.larger);
}

int32_t source_width(const vexo_img &src, int32_t plane, int32_t prescale) {
  return source_size(src, plane, prescale).width;
}

int64_t block_count(const vexo_rsz_new_context *c, int32_t plane) {
  return (int64_t{c->short_rows[plane]} + c->tall_rows[plane]) *
         (int64_t{c->narrow_columns[plane]} + c->wide_columns[plane]);
}

}  // namespace lox

int32_t vexo_rsz_new_set_img(vexo_img *pair) {
  using lox::round_up;
  // Quirk: the destination's selector counts for both, because callers set it
  // there alone.
  const int32_t selector = pair[1].color_std;
  for (int i = 0; i < 2; ++i) {
    vexo_img &img = pair[i];
    const int32_t w = img.width[0];
    const int32_t h = img.height[0];
    if (lox::has_chroma_pairs(img.format) && (selector == 0 || selector == 1)) {
      img.width[1] = w / 2;
      img.height[1] = h / 2;
      if (selector == 0) {
        img.stride[0] = img.stride[1] = round_up(w, 128);
        img.buf_height[0] = round_up(h, 32);
        img.buf_height[1] = round_up(h / 2, 16);
      } else if (i == 0) {
        img.stride[0] = w;
        img.stride[1] = round_up(w, 2);
        img.buf_height[0] = h;
        img.buf_height[1] = h / 2;
      } else {
        img.stride[0] = img.stride[1] = round_up(w, 16);
        img.buf_height[0] = round_up(h, 16);
        img.buf_height[1] = round_up(h / 2, 16);
      }
    } else if (img.format == VEXO_FMT_YUV420) {
      for (int plane = 0; plane < 3; ++plane) {
        img.stride[plane] = round_up(img.width[plane], 16);
        img.buf_height[plane] = round_up(img.height[plane], 16);
      }
    }
  }
  return VEXO_OK;
}

int32_t algorithm_settings(const vexo_img *pair,
                           vexo_rsz_new_context *context) {
  lox::plan_plane(pair, context, 0);
  lox::plan_plane(pair, context, 1);
  return VEXO_OK;
}

void split_settings(vexo_rsz_new_context *context) {
  uint8_t *type = context->block_types;
  int32_t *first_column = context->block_columns;
  int32_t *first_row = context->block_rows;
  for (int plane = 0; plane < 2; ++plane) {
    const int64_t tall = context->tall_rows[plane];
    const int64_t rows = context->short_rows[plane] + tall;
    const int64_t wide = context->wide_columns[plane];
    const int64_t columns = context->narrow_columns[plane] + wide;
    if (rows < 1 || columns < 1) continue;
    // Rounding half of n up keeps starts within half a sample of where the
    // ratio puts them.
    const auto is_larger = [](int64_t i, int64_t t, int64_t n) {
      return (i * t + n / 2) / n != ((i + 1) * t + n / 2) / n;
    };
    int32_t x = 0;
    for (int64_t j = 0; j < columns; ++j) {
      first_column[j] = x;
      type[j] = is_larger(j, wide, columns) ? 1 : 0;
      x += context->block_width[plane][type[j]];
    }
    // Columns are the same in each row, and so whether they are wide.
    const int32_t *const starts = first_column;
    const uint8_t *const widths = type;
    int32_t y = 0;
    for (int64_t i = 0; i < rows; ++i) {
      const int tall_type = is_larger(i, tall, rows) ? 2 : 0;
      for (int64_t j = 0; j < columns; ++j) {
        *type++ = static_cast<uint8_t>(widths[j] % 2 + tall_type);
        *first_column++ = starts[j];
        *first_row++ = y;
      }
      y += context->block_height[plane][tall_type];
    }
  }
}
