// SPDX-License-Identifier: Apache-2.0
//
// Samples to fewer bits, plane by plane. Where pairs become planes or planes
// pairs, samples are bytes first, a piece of a row at a time.
#include "dither/depth.h"

#include <cstddef>

#include "common/format.h"
#include "csc/layout_rows.h"
#include "dither/dither_rows.h"
#include "orumlox/dither.h"
#include "simd/dither.h"

namespace lox {

namespace {

// How the rows of a plane come from src_bits bits to dst_bits.
class Fewer {
 public:
  Fewer(int src_bits, int dst_bits) {
    for (FewerBits &how : rows_) {
      how.most = static_cast<uint16_t>((1 << src_bits) - 1);
      how.shift = static_cast<uint16_t>(src_bits - dst_bits);
      for (uint16_t &added : how.added) {
        added = static_cast<uint16_t>(1 << how.shift >> 1);
      }
    }
  }
  // Dithered instead of rounded: samples, or pairs of them, from a place on.
  void dither(int unit, int32_t x, int32_t y) {
    for (FewerBits &how : rows_) {
      int i = 0;
      for (uint16_t &added : how.added) {
        added = static_cast<uint16_t>(
            dither_threshold((x & 7) + i++ / unit, y & 7) << how.shift >> 6);
      }
      y = (y & 7) + 1;
    }
  }
  const FewerBits &row(ptrdiff_t y) const { return rows_[y & 7]; }

 private:
  FewerBits rows_[8];
};

int32_t dither_plane(int unit, const uint8_t *src, int32_t width,
                     int32_t height, int32_t src_stride, int32_t dst_stride,
                     uint8_t *dst, int32_t src_bits, int32_t dst_bits,
                     int32_t x, int32_t y) {
  if (src_bits < 8 || src_bits > 16 || dst_bits < 1 || dst_bits > 8) {
    return VEXO_ERR_ARG;
  }
  if (width < 1 || height < 1) return VEXO_OK;
  const auto convert =
      src_bits == 8 ? dither_rows().bytes : dither_rows().words;
  Fewer fewer(src_bits, dst_bits);
  fewer.dither(unit, x, y);
  for (ptrdiff_t row = 0; row < height; ++row) {
    convert(src + row * src_stride, dst + row * dst_stride,
            ptrdiff_t{width} * unit, fewer.row(row));
  }
  return VEXO_OK;
}

// --- pictures ---------------------------------------------------------------

bool has_pairs(int32_t format) {
  return format == VEXO_FMT_P010LE || has_chroma_pairs(format);
}
bool has_v_first(int32_t format) {
  return format == VEXO_FMT_YV12 || format == VEXO_FMT_NV21;
}

// Plane p's row of an image.
struct Rows {
  const vexo_img &img;
  uint8_t *of(int p, ptrdiff_t row) const {
    return img.plane[p] + row * img.stride[p];
  }
};

// A row of chroma.
class ChromaRow {
 public:
  ChromaRow(const vexo_img &src, const vexo_img &dst, ptrdiff_t row)
      : src_{src}, dst_{dst}, row_(row), v_first_(has_v_first(dst.format)) {}

  // The plane that the source's plane p is in the destination.
  int place(int p) const { return v_first_ ? 3 - p : p; }

  void pairs_to_planes(ptrdiff_t width, const FewerBits &how) const {
    for (ptrdiff_t x = 0; x < width; x += kPiece / 2) {
      const ptrdiff_t n = width - x < kPiece / 2 ? width - x : kPiece / 2;
      uint8_t bytes[kPiece];
      dither_rows().words(src_.of(1, row_) + 4 * x, bytes, 2 * n, how);
      layout_rows().deinterleave(bytes, dst_.of(place(1), row_) + x,
                                 dst_.of(place(2), row_) + x, 2 * n);
    }
  }
  void planes_to_pairs(ptrdiff_t width, const FewerBits &how) const {
    for (ptrdiff_t x = 0; x < width; x += kPiece) {
      const ptrdiff_t n = width - x < kPiece ? width - x : kPiece;
      uint8_t first[kPiece];
      uint8_t second[kPiece];
      dither_rows().words(src_.of(place(1), row_) + 2 * x, first, n, how);
      dither_rows().words(src_.of(place(2), row_) + 2 * x, second, n, how);
      layout_rows().interleave(first, second, dst_.of(1, row_) + 2 * x, n);
    }
  }
  void exchange(ptrdiff_t width) const {
    uint8_t *const to = dst_.of(1, row_);
    layout_rows().swap(to, to, width);
  }

 private:
  // Whole periods of thresholds.
  static constexpr ptrdiff_t kPiece = ptrdiff_t{64} * FewerBits::kPeriod;

  Rows src_, dst_;
  ptrdiff_t row_;
  bool v_first_;
};

// Calls each(row) for the rows of a plane that go with `rows` of the picture.
template <class Each>
void for_rows(const vexo_img &src, int p, RowRange rows, Each each) {
  if (src.width[p] < 1 || src.height[p] < 1) return;
  const RowRange range = rows_of_plane(rows, src.height[0], src.height[p]);
  for (int32_t row = range.begin; row < range.end; ++row) each(row);
}

// Samples of plane p, or pairs of them, to those of plane q. Rows without
// padding that are all alike are one.
void narrow_plane(const vexo_img &src, int p, const vexo_img &dst, int q,
                  int unit, const Fewer &fewer, bool alike, RowRange rows) {
  const ptrdiff_t n = ptrdiff_t{src.width[p]} * unit;
  const auto words = dither_rows().words;
  if (alike && src.stride[p] == 2 * int64_t{n} && dst.stride[q] == n &&
      src.height[p] > 0 && rows.begin == 0 && rows.end >= src.height[0]) {
    words(src.plane[p], dst.plane[q], n * src.height[p], fewer.row(0));
    return;
  }
  for_rows(src, p, rows, [&](int32_t row) {
    words(Rows{src}.of(p, row), Rows{dst}.of(q, row), n, fewer.row(row));
  });
}

// Between P010LE and planes.
void move_10_bits(const vexo_img &src, const vexo_img &dst) {
  const DitherRows &kernels = dither_rows();
  const bool down = src.format == VEXO_FMT_P010LE;
  const Rows from = {src};
  const Rows to = {dst};
  for_rows(src, 0, kAllRows, [&](int32_t row) {
    (down ? kernels.words_down : kernels.words_up)(from.of(0, row),
                                                   to.of(0, row), src.width[0]);
  });
  for_rows(src, 1, kAllRows, [&](int32_t row) {
    if (down) {
      kernels.pairs_down(from.of(1, row), to.of(1, row), to.of(2, row),
                         src.width[1]);
    } else {
      kernels.pairs_up(from.of(1, row), from.of(2, row), to.of(1, row),
                       src.width[1]);
    }
  });
}

}  // namespace

bool loses_bits(int32_t from, int32_t to) {
  return is_10_bit(from) &&
         (to == VEXO_FMT_YUV420 || to == VEXO_FMT_YV12 || has_chroma_pairs(to));
}

void to_8_bits(const vexo_img &src, const vexo_img &dst, Loss loss,
               RowRange rows) {
  const bool from_pairs = has_pairs(src.format);
  const bool to_pairs = has_pairs(dst.format);
  const bool dithers = loss == Loss::kDithered;
  Fewer fewer(from_pairs ? 16 : 10, 8);
  if (dithers) fewer.dither(1, 0, 0);
  narrow_plane(src, 0, dst, 0, 1, fewer, !dithers, rows);
  if (dithers && from_pairs) fewer.dither(2, 0, 0);
  const bool v_first = has_v_first(dst.format);
  if (from_pairs == to_pairs) {
    narrow_plane(src, 1, dst, from_pairs || !v_first ? 1 : 2,
                 from_pairs ? 2 : 1, fewer, !dithers, rows);
    if (!from_pairs) {
      narrow_plane(src, 2, dst, v_first ? 1 : 2, 1, fewer, !dithers, rows);
    }
    if (!from_pairs || !v_first) return;
  }
  for_rows(src, 1, rows, [&](int32_t row) {
    const ChromaRow chroma(src, dst, row);
    if (from_pairs && to_pairs) {
      chroma.exchange(src.width[1]);
    } else if (from_pairs) {
      chroma.pairs_to_planes(src.width[1], fewer.row(row));
    } else {
      chroma.planes_to_pairs(src.width[1], fewer.row(row));
    }
  });
}

}  // namespace lox

extern "C" {

int32_t vexo_csc_deep(const vexo_img *src, const vexo_img *dst) {
  if (src->format == dst->format) return VEXO_ERR_ARG;
  if (lox::is_10_bit(src->format) && lox::is_10_bit(dst->format)) {
    lox::move_10_bits(*src, *dst);
  } else if (lox::loses_bits(src->format, dst->format)) {
    lox::to_8_bits(*src, *dst, lox::Loss::kRounded, lox::kAllRows);
  } else {
    return VEXO_ERR_UNSUPPORTED;
  }
  return VEXO_OK;
}

#define LOX_DITHER(name, unit)                                                 \
  int32_t name(const uint8_t *src, int32_t width, int32_t height,              \
               int32_t src_stride, int32_t dst_stride, uint8_t *dst,           \
               int32_t src_bits, int32_t dst_bits, int32_t x, int32_t y) {     \
    return lox::dither_plane(unit, src, width, height, src_stride, dst_stride, \
                             dst, src_bits, dst_bits, x, y);                   \
  }
LOX_DITHER(vexo_dit_8b, 1)
LOX_DITHER(vexo_dit_8b8b, 2)

}  // extern "C"
