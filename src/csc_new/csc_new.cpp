// SPDX-License-Identifier: Apache-2.0
//
// The conversion that interpolates chroma: checks, formats, and the walk over a
// picture.
#include "orumlox/csc_new.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/caches.h"
#include "common/row_range.h"
#include "csc/kernel_args.h"
#include "csc/layout_rows.h"
#include "csc_new/matrices.h"
#include "csc_new/smooth_rows.h"

namespace lox {

namespace {

struct SmoothSource {
  int32_t format;
  SmoothSamples samples;
  // The planes of U and V. Pairs have both in one, and either comes first.
  int u_plane, v_plane;
  bool v_first;
  // Whether pixels share chroma samples, along rows and across.
  bool half_width, half_height;
  int factor;
  // Of packed rows, whose bytes are luma and pairs in turn.
  bool packed, luma_first;

  bool words() const { return samples >= kWordPlane; }
  bool pairs() const { return samples == kBytePairs || samples == kWordPairs; }
};

constexpr SmoothSource planes(int32_t format, int u_plane, bool half_width,
                              bool half_height) {
  return {format,     kBytePlane,  u_plane, 3 - u_plane, false,
          half_width, half_height, kOnTop,  false,       false};
}
constexpr SmoothSource pairs(int32_t format, SmoothSamples samples,
                             bool v_first) {
  return {format, samples, 1, 1, v_first, true, true, kOnTop, false, false};
}
constexpr SmoothSource packed(int32_t format, bool luma_first) {
  return {format, kBytePairs, 0,      0,    false,
          true,   false,      kOnTop, true, luma_first};
}

constexpr SmoothSource kSources[] = {
    planes(VEXO_FMT_YUV420, 1, true, true),
    planes(VEXO_FMT_YUV422N, 1, true, false),
    planes(VEXO_FMT_YUV444, 1, false, false),
    planes(VEXO_FMT_YV12, 2, true, true),
    planes(VEXO_FMT_YV16, 2, true, false),
    pairs(VEXO_FMT_NV12, kBytePairs, false),
    pairs(VEXO_FMT_NV21, kBytePairs, true),
    packed(VEXO_FMT_UYVY, false),
    packed(VEXO_FMT_YUYV, true),
    {VEXO_FMT_YUV420PLANAR16, kWordPlane, 1, 2, false, true, true, kBelow,
     false, false},
    pairs(VEXO_FMT_P010LE, kWordPairs, false),
};

struct Destination {
  int32_t format;
  SmoothScale scale;
  int bytes;
};

// By SmoothTarget.
constexpr Destination kDestinations[kSmoothTargets] = {
    {VEXO_FMT_RGB565, kScale565, 2},     {VEXO_FMT_BGR565, kScale565, 2},
    {VEXO_FMT_RGB888, kScale8, 3},       {VEXO_FMT_BGR888, kScale8, 3},
    {VEXO_FMT_RGBA8888, kScale8, 4},     {VEXO_FMT_BGRA8888, kScale8, 4},
    {VEXO_FMT_ARGB8888, kScale8, 4},     {VEXO_FMT_ABGR8888, kScale8, 4},
    {VEXO_FMT_RGBA1010102, kScale10, 4}, {VEXO_FMT_RGBAF16, kScaleF16, 8},
};

const SmoothSource *source_of(int32_t format) {
  for (const SmoothSource &source : kSources) {
    if (source.format == format) return &source;
  }
  return nullptr;
}

// A SmoothTarget, or -1.
int target_of(int32_t format) {
  for (int i = 0; i < kSmoothTargets; ++i) {
    if (kDestinations[i].format == format) return i;
  }
  return -1;
}

// The matrices of a standard and both depths, or null.
const SmoothMatrix (*matrices_of(int32_t standard))[kSmoothScales] {
  constexpr struct {
    int32_t standard;
    int primaries, full;
  } kStandards[] = {{VEXO_STD_DEFAULT, 0, 0}, {VEXO_STD_BT601_FULL, 0, 1},
                    {VEXO_STD_BT709, 1, 0},   {VEXO_STD_BT709_FULL, 1, 1},
                    {VEXO_STD_BT2020, 2, 0},  {VEXO_STD_BT2020_FULL, 2, 1}};
  for (const auto &known : kStandards) {
    if (known.standard == standard) {
      return kSmoothMatrices.of[known.primaries][known.full];
    }
  }
  return nullptr;
}

int32_t least(int32_t a, int32_t b) { return a < b ? a : b; }

struct Planes {
  uint8_t *const *src;
  const int32_t *src_stride, *dst_stride;
  uint8_t *const *dst;
  int32_t width, height;

  const uint8_t *row(int plane, int32_t y) const {
    return src[plane] + static_cast<ptrdiff_t>(y) * src_stride[plane];
  }
};

// Columns that are done together. What is kept of them is on the stack and in
// the nearest cache.
constexpr int32_t kColumns = 2048;

// Numbers of chroma, with room for what kernels do beyond.
struct Numbers {
  alignas(64) int16_t number[kColumns + 2 + kSmoothBeyond];
};
struct HalfNumbers {
  // The first is the neighbour on the left.
  alignas(64) int16_t number[kColumns / 2 + 2 + kSmoothBeyond];
};

// Some columns of a picture, from an even one on.
class Columns {
 public:
  Columns(const SmoothSource &source, const Planes &planes, int32_t first,
          int32_t count)
      : source_(source), planes_(planes), first_(first), count_(count) {
    for (Numbers &row : pixels_) clear(row.number + count);
    if (!source.half_width) return;
    first_sample_ = first / 2;
    samples_ = count / 2 + count % 2;
    samples_left_ = planes.width / 2 + planes.width % 2 - first_sample_;
    for (auto &row : rows_) {
      for (HalfNumbers &kind : row) clear(kind.number + samples_ + 2);
    }
  }

  void convert(int target, SmoothSiting siting, const SmoothMatrix &matrix,
               bool stream, RowRange rows) {
    const int32_t last = (planes_.height - 1) / 2;
    const int pixel_bytes = kDestinations[target].bytes;
    const auto to_rgb = smooth_rows().to_rgb[source_.words() ? 1 : 0][target];
    for (int32_t y = rows.begin; y < rows.end; ++y) {
      const uint8_t *luma =
          planes_.row(0, y) + ptrdiff_t{first_} * (source_.words() ? 2 : 1);
      if (source_.packed) luma = take_packed(y);
      if (!source_.half_width) {
        make_every_pixel(y);
      } else if (source_.half_height) {
        const int32_t row = y / 2;
        const int32_t other =
            y % 2 == 0 ? (row > 0 ? row - 1 : 0) : least(row + 1, last);
        enlarge(siting, slot_of(row), slot_of(other));
      } else {
        const int slot = slot_of(y);
        enlarge(siting, slot, slot);
      }
      const int16_t *const chroma[2] = {pixels_[0].number, pixels_[1].number};
      to_rgb(luma, source_.factor, chroma, matrix, stream,
             planes_.dst[0] +
                 static_cast<ptrdiff_t>(y) * planes_.dst_stride[0] +
                 ptrdiff_t{first_} * pixel_bytes,
             count_);
    }
  }

 private:
  // What kernels read and leave out again.
  static void clear(int16_t *beyond) {
    memset(beyond, 0, kSmoothBeyond * sizeof *beyond);
  }

  void make_every_pixel(int32_t y) {
    const uint8_t *const from[2] = {planes_.row(source_.u_plane, y) + first_,
                                    planes_.row(source_.v_plane, y) + first_};
    int16_t *const to[2] = {pixels_[0].number, pixels_[1].number};
    smooth_rows().samples[source_.samples](from, source_.factor, to, count_);
    for (int16_t *const row : to) {
      smooth_rows().enlarge[kEveryPixel](row, row, row, count_);
    }
  }

  // The slot that holds a row of chroma. A row and its neighbours never share
  // one.
  int slot_of(int32_t row) {
    const int slot = row % 2;
    if (held_[slot] != row) {
      held_[slot] = row;
      hold(row, slot);
    }
    return slot;
  }

  // The samples of the columns and, where there are any, one on either side;
  // where there are none those at the ends stand for them.
  void hold(int32_t row, int slot) {
    const int32_t before = first_sample_ > 0 ? 1 : 0;
    const int32_t behind = samples_ < samples_left_ ? 1 : 0;
    const ptrdiff_t skipped =
        ptrdiff_t{first_sample_ - before} * (source_.words() ? 2 : 1);
    const uint8_t *from[2];
    if (source_.packed) {
      from[0] = from[1] = packed_pairs_;
    } else if (source_.pairs()) {
      from[0] = from[1] = planes_.row(source_.u_plane, row) + 2 * skipped;
    } else {
      from[0] = planes_.row(source_.u_plane, row) + skipped;
      from[1] = planes_.row(source_.v_plane, row) + skipped;
    }
    HalfNumbers *const kept = rows_[slot];
    int16_t *const to[2] = {kept[source_.v_first ? 1 : 0].number + 1 - before,
                            kept[source_.v_first ? 0 : 1].number + 1 - before};
    smooth_rows().samples[source_.samples](from, source_.factor, to,
                                           before + samples_ + behind);
    for (int kind = 0; kind < 2; ++kind) {
      int16_t *const number = kept[kind].number;
      if (before == 0) number[0] = number[1];
      if (behind == 0) number[samples_ + 1] = number[samples_];
    }
  }

  void enlarge(SmoothSiting siting, int near_slot, int far_slot) {
    for (int kind = 0; kind < 2; ++kind) {
      smooth_rows().enlarge[siting](rows_[near_slot][kind].number + 1,
                                    rows_[far_slot][kind].number + 1,
                                    pixels_[kind].number, samples_);
    }
  }

  // Takes the bytes of a packed row apart. The luma of the columns.
  const uint8_t *take_packed(int32_t y) {
    const int32_t before = first_sample_ > 0 ? 1 : 0;
    const int32_t behind = samples_ < samples_left_ ? 1 : 0;
    uint8_t *const luma = packed_luma_;
    uint8_t *const chroma = packed_pairs_;
    layout_rows().deinterleave(
        planes_.row(0, y) + ptrdiff_t{first_sample_ - before} * 4,
        source_.luma_first ? luma : chroma, source_.luma_first ? chroma : luma,
        ptrdiff_t{before + samples_ + behind} * 4);
    return luma + 2 * ptrdiff_t{before};
  }

  HalfNumbers rows_[2][2];
  Numbers pixels_[2];
  // Room for a pair on either side.
  uint8_t packed_luma_[kColumns + 64];
  uint8_t packed_pairs_[kColumns + 64];
  const SmoothSource &source_;
  const Planes &planes_;
  int32_t first_, count_;
  // Of chroma: the first sample, how many belong to the columns, how many there
  // are from the first one on.
  int32_t first_sample_ = 0, samples_ = 0, samples_left_ = 0;
  int32_t held_[2] = {-1, -1};
};

// Whether a picture is written past the caches: what none of them would keep,
// in rows that are aligned for it.
bool streams(const Planes &planes, int pixel_bytes) {
  const auto alignment = static_cast<uintptr_t>(smooth_rows().stream_alignment);
  const uint64_t bytes = static_cast<uint64_t>(planes.width) *
                         static_cast<uint64_t>(planes.height) *
                         static_cast<uint64_t>(pixel_bytes);
  return alignment != 0 && bytes >= memory_now().stream_rows &&
         reinterpret_cast<uintptr_t>(planes.dst[0]) % alignment == 0 &&
         static_cast<uintptr_t>(planes.dst_stride[0]) % alignment == 0;
}

void convert(const SmoothSource &source, int target, SmoothSiting siting,
             const SmoothMatrix (*matrices)[kSmoothScales],
             const Planes &planes, RowRange rows) {
  const SmoothMatrix &matrix =
      matrices[source.words() ? 1 : 0][kDestinations[target].scale];
  const bool stream = streams(planes, kDestinations[target].bytes);
  const RowRange some = {rows.begin, least(rows.end, planes.height)};
  for (int32_t first = 0; first < planes.width;) {
    const int32_t count = least(planes.width - first, kColumns);
    Columns(source, planes, first, count)
        .convert(target, siting, matrix, stream, some);
    first += count;
  }
  if (stream) smooth_rows().end_stream();
}

int32_t convert_picture(const vexo_img &src, const vexo_img &dst,
                        RowRange rows) {
  const int32_t width = src.width[0];
  const int32_t height = src.height[0];
  if (src.format == dst.format || width != dst.width[0] ||
      height != dst.height[0]) {
    return VEXO_ERR_ARG;
  }
  const SmoothSource *const source = source_of(src.format);
  const int target = target_of(dst.format);
  const auto *const matrices = matrices_of(src.color_std);
  const int32_t siting = src.reserved1;
  if (width < 1 || height < 1 || source == nullptr || target < 0 ||
      matrices == nullptr ||
      (dst.color_std != 0 && dst.color_std != src.color_std) ||
      (siting != VEXO_SITING_LEFT && siting != VEXO_SITING_CENTRE)) {
    return VEXO_ERR_UNSUPPORTED;
  }
  convert(*source, target, siting == VEXO_SITING_LEFT ? kLeft : kCentre,
          matrices,
          {src.plane, src.stride, dst.stride, dst.plane, width, height}, rows);
  return VEXO_OK;
}

// A kernel, of samples on the left.
void convert_as(int32_t from, int32_t to, int32_t standard, LOX_PARAMETERS) {
  if (src_width[0] < 1 || src_height[0] < 1) return;
  convert(*source_of(from), target_of(to), kLeft, matrices_of(standard),
          {src_plane, src_stride, dst_stride, dst_plane, src_width[0],
           src_height[0]},
          kAllRows);
}

}  // namespace

}  // namespace lox

extern "C" {

int32_t vexo_csc_new(const vexo_img *src, const vexo_img *dst) {
  return lox::convert_picture(*src, *dst, lox::kAllRows);
}

int32_t vexo_csc_new_rows(const vexo_img *src, const vexo_img *dst, int32_t y0,
                          int32_t y1) {
  return lox::in_range({y0, y1}, src->height[0], false,
                       [=](lox::RowRange rows) {
                         return lox::convert_picture(*src, *dst, rows);
                       });
}

int32_t vexo_csc_new_supports(int32_t src_format, int32_t dst_format,
                              int32_t color_std) {
  return lox::source_of(src_format) != nullptr &&
                 lox::target_of(dst_format) >= 0 &&
                 lox::matrices_of(color_std) != nullptr
             ? 1
             : 0;
}

#define LOX_NEW_KERNEL(name, from, to, standard)                              \
  void name(LOX_PARAMETERS) {                                                 \
    lox::convert_as(VEXO_FMT_##from, VEXO_FMT_##to, VEXO_STD_##standard,      \
                    src_plane, src_width, src_height, src_stride, dst_stride, \
                    dst_plane);                                               \
  }
#define LOX_NEW_RGBA(token, from) \
  LOX_NEW_KERNEL(vexo_csc_##token##_to_rgba8888_new, from, RGBA8888, DEFAULT)
LOX_NEW_RGBA(yuv420, YUV420)
LOX_NEW_RGBA(yv12, YV12)
LOX_NEW_RGBA(nv12, NV12)
LOX_NEW_RGBA(nv21, NV21)
LOX_NEW_RGBA(yuv422n, YUV422N)
LOX_NEW_RGBA(yv16, YV16)
LOX_NEW_RGBA(yuv444, YUV444)
LOX_NEW_RGBA(uyvy, UYVY)
LOX_NEW_RGBA(yuyv, YUYV)
LOX_NEW_RGBA(yuv420Planar16, YUV420PLANAR16)
LOX_NEW_RGBA(p010le, P010LE)

#define LOX_NEW_RGBA_BT709(token, from)                                    \
  LOX_NEW_KERNEL(vexo_csc_bt709_##token##_to_rgba8888_new, from, RGBA8888, \
                 BT709)
LOX_NEW_RGBA_BT709(yuv420, YUV420)
LOX_NEW_RGBA_BT709(nv12, NV12)
LOX_NEW_RGBA_BT709(nv21, NV21)

#define LOX_NEW_P010_BT2020(token, to) \
  LOX_NEW_KERNEL(vexo_csc_bt2020_p010le_to_##token##_new, P010LE, to, BT2020)
LOX_NEW_P010_BT2020(rgba8888, RGBA8888)
LOX_NEW_P010_BT2020(rgba1010102, RGBA1010102)
LOX_NEW_P010_BT2020(rgbaf16, RGBAF16)

}  // extern "C"
