// SPDX-License-Identifier: Apache-2.0
//
// Walks the planes of a YUV source and keeps the rules of odd sizes. The
// exported kernels, at the end, are one-line calls.
#include "csc/yuv_to_rgb.h"

#include <cstddef>
#include <cstring>

#include "common/caches.h"
#include "csc/drivers.h"
#include "csc/routes.h"
#include "csc/yuv_to_rgb_rows.h"
#include "orumlox/csc.h"

namespace lox {

Writing writing_of(RgbLayout layout, const KernelArgs &args) {
  const uint64_t pixels = args.pixels();
  const uint64_t bytes =
      pixels * static_cast<uint64_t>(kPixelFormats[layout].bytes);
  const uintptr_t alignment =
      static_cast<uintptr_t>(yuv_to_rgb_rows().stream_alignment);
  const bool stream =
      alignment != 0 && bytes >= memory_now().stream_rows &&
      reinterpret_cast<uintptr_t>(args.dst_plane[0]) % alignment == 0 &&
      static_cast<uintptr_t>(args.dst_stride[0]) % alignment == 0;
  // A YUV pixel is taken for two bytes; it has one and a half to three.
  const bool far = bytes + 2 * pixels >= memory_now().far_from;
  return {stream, memory_now().fetches && far, far};
}

namespace {

// What the driver needs to know of a YUV source.
struct YuvSource {
  YuvRowKind kind;
  // The planes that hold U and V; for pairs and packed rows the first is the
  // plane that holds both.
  int u_plane, v_plane;
  // Luma rows that share a chroma row: 1 or 2.
  int rows_per_chroma;
  // Rows are converted in pairs of pixels to the end, and widths that are no
  // multiple of 4 share their chroma rows differently: see convert().
  bool whole_pairs;
  // Bytes of a luma sample.
  int unit = 1;
};

// By YuvSourceId.
constexpr YuvSource kSources[] = {
    {kRowPlanar, 1, 2, 2, true},   // kYuv420
    {kRowPlanar, 2, 1, 2, true},   // kYv12
    {kRowUv, 1, 1, 2, true},       // kNv12
    {kRowVu, 1, 1, 2, true},       // kNv21
    {kRowUv, 1, 1, 2, true, 2},    // kP010
    {kRowPlanar, 1, 2, 1, false},  // kYuv422n
    {kRowFull, 1, 2, 2, false},    // kYuv422w
    {kRowFull, 1, 2, 1, false},    // kYuv444
    {kRowUyvy, 0, 0, 1, false},    // kUyvy
    {kRowYuyv, 0, 0, 1, false},    // kYuyv
    {kRowPlanar, 1, 2, 2, false},  // kExactYuv420
    {kRowUv, 1, 1, 2, false},      // kExactNv12
    {kRowVu, 1, 1, 2, false},      // kExactNv21
};

// What an odd number of rows of whole pairs does then: see convert().
bool shares_from_bottom(ptrdiff_t width, int32_t height) {
  return width % 4 != 0 && height % 2 != 0;
}

// A row of odd width as far as the next one begins in its last pair: that pair
// goes through a copy, because somebody else may be writing the next row.
void convert_up_to_next(const YuvSource &source, YuvToRgbFn one_row,
                        YuvToRgbRows row, ptrdiff_t width, int pixel_bytes,
                        ptrdiff_t stride) {
  row.stream = false;
  one_row(row, width);
  const ptrdiff_t last = width - 1;
  const ptrdiff_t chroma =
      source.kind == kRowPlanar ? last / 2 : last * source.unit;
  uint8_t pair[8];
  one_row({{row.y[0] + last * source.unit, nullptr},
           {row.chroma[0] + chroma, row.chroma[1] + chroma},
           {pair, nullptr},
           false,
           false,
           row.column + static_cast<int32_t>(last),
           row.row},
          2);
  const ptrdiff_t written = last * pixel_bytes;
  std::memcpy(row.rgb[0] + written, pair,
              static_cast<size_t>(stride - written));
}

void convert(const YuvSource &source, const YuvToRgbKernels &forms,
             RgbLayout layout, const KernelArgs &args) {
  const ptrdiff_t width = args.src_width[0];
  const int32_t height = args.src_height[0];
  if (args.empty()) return;
  // Quirk: the pair that an odd width ends with is converted whole, because
  // rows go in pairs to the end: one luma byte is read and one pixel written
  // beyond the row. The next row may begin at that pixel, so rows are done one
  // by one.
  const bool beyond = source.whole_pairs && width % 2 != 0;
  const ptrdiff_t row_pixels = beyond ? width + 1 : width;
  const int pixel_bytes = kPixelFormats[layout].bytes;
  const ptrdiff_t stride = args.dst_stride[0];
  const bool overlap = beyond && stride >= width * pixel_bytes &&
                       stride < row_pixels * pixel_bytes;
  // Quirk: rows share chroma from the bottom up where the width is no multiple
  // of 4, because callers know these pictures. Of an odd number of rows the
  // first then has a chroma row to itself, otherwise the last.
  const int32_t moved =
      source.whole_pairs && shares_from_bottom(width, height) ? 1 : 0;

  const bool shared = source.rows_per_chroma == 2;
  const YuvToRgbFn two_rows = beyond || !shared ? nullptr : forms.two_rows;
  Writing writing = writing_of(layout, args);
  // Measured: rows one by one keep up with memory, and stores of less than a
  // line past the caches do not.
  if (two_rows == nullptr && yuv_to_rgb_rows().stream_alignment < 64) {
    writing.stream = false;
  }
  const RowRange rows = args.rows();
  // `count` rows, or with `size` 2 pairs of them, from one on.
  const auto rows_from = [&](int32_t row, int32_t size, int32_t count) {
    const int32_t chroma_row = shared ? (row + moved) / 2 : row;
    const auto step = [size](int32_t row_step) {
      return static_cast<ptrdiff_t>(static_cast<size_t>(row_step) *
                                    static_cast<size_t>(size));
    };
    return YuvToRgbRows{
        {args.src(0, row), size == 2 ? args.src(0, row + 1) : nullptr},
        {args.src(source.u_plane, chroma_row),
         args.src(source.v_plane, chroma_row)},
        {args.dst(0, row), size == 2 ? args.dst(0, row + 1) : nullptr},
        writing.stream,
        writing.fetch,
        0,
        row,
        count,
        step(args.src_stride[0]),
        {args.src_stride[source.u_plane], args.src_stride[source.v_plane]},
        step(args.dst_stride[0]),
        writing.far};
  };
  for (int32_t row = rows.begin; row < rows.end;) {
    const int32_t left = rows.end - row;
    if (two_rows != nullptr && (row + moved) % 2 == 0 && left > 1) {
      two_rows(rows_from(row, 2, left / 2), row_pixels);
      row += left / 2 * 2;
      continue;
    }
    if (!shared && !overlap) {
      forms.one_row(rows_from(row, 1, left), row_pixels);
      break;
    }
    const YuvToRgbRows one = rows_from(row, 1, 1);
    ++row;
    if (overlap && row == rows.end && row < height) {
      convert_up_to_next(source, forms.one_row, one, width, pixel_bytes,
                         stride);
    } else {
      forms.one_row(one, row_pixels);
    }
  }
  if (writing.stream) yuv_to_rgb_rows().end_stream();
}

}  // namespace

bool in_whole_pairs(const Route &route) {
  return (route.driver == yuv_to_rgb || route.driver == words_to_rgb) &&
         kSources[route.from].whole_pairs;
}

bool has_first_row_alone(const Route &route, int32_t width, int32_t height) {
  return in_whole_pairs(route) && shares_from_bottom(width, height);
}

void yuv_to_rgb(const KernelArgs &args, int from, int to) {
  const YuvSource &source = kSources[from];
  const auto layout = static_cast<RgbLayout>(to);
  convert(source, yuv_to_rgb_rows().yuv_to_rgb[source.kind][layout], layout,
          args);
}

void words_to_rgb(const KernelArgs &args, int from, int to) {
  const CscRows &kernels = yuv_to_rgb_rows();
  convert(kSources[from],
          to == kRgba8888 ? kernels.words_to_rgba
                          : kernels.words_to_565[to - kDitheredRgb565],
          static_cast<RgbLayout>(to), args);
}

#define LOX_TO_RGBA(driver, forms)                             \
  void driver(const KernelArgs &args, int from, int) {         \
    const YuvSource &source = kSources[from];                  \
    convert(source, yuv_to_rgb_rows().forms, kRgba8888, args); \
  }
LOX_TO_RGBA(bt601_full_to_rgb, bt601_full[source.kind])
LOX_TO_RGBA(bt709_to_rgb, bt709_planar)
LOX_TO_RGBA(bt709_full_to_rgb, bt709_full_planar)

void grey_to_rgb(const KernelArgs &args, int, int to) {
  const CscRows &kernels = yuv_to_rgb_rows();
  convert_rows(to == kRgb888 ? kernels.grey_to_rgb888 : kernels.grey_to_rgb565,
               args);
}

}  // namespace lox

extern "C" {

LOX_KERNELS_RGB(yuv420, yuv_to_rgb, kYuv420)
LOX_KERNELS_RGB(yv12, yuv_to_rgb, kYv12)
LOX_KERNELS_RGB(nv12, yuv_to_rgb, kNv12)
LOX_KERNELS_RGB(nv21, yuv_to_rgb, kNv21)
LOX_KERNELS_RGB(yuv422n, yuv_to_rgb, kYuv422n)
LOX_KERNELS_RGB(yuv444, yuv_to_rgb, kYuv444)
LOX_KERNELS_RGB(uyvy, yuv_to_rgb, kUyvy)
LOX_KERNELS_RGB(yuyv, yuv_to_rgb, kYuyv)
LOX_KERNELS_565(yuv422w, yuv_to_rgb, kYuv422w)

LOX_KERNEL(yuv400_to_rgb565, grey_to_rgb, kNothing, kRgb565)
LOX_KERNEL(yuv400_to_rgb888, grey_to_rgb, kNothing, kRgb888)

#define LOX_RGBA_KERNEL(token, driver, from) \
  LOX_KERNEL(token##_to_rgba8888, driver, from, kRgba8888)
LOX_RGBA_KERNEL(p010le, words_to_rgb, kP010)
LOX_RGBA_KERNEL(bt601_fr_yuv420, bt601_full_to_rgb, kExactYuv420)
LOX_RGBA_KERNEL(bt601_fr_nv12, bt601_full_to_rgb, kExactNv12)
LOX_RGBA_KERNEL(bt601_fr_nv21, bt601_full_to_rgb, kExactNv21)
LOX_RGBA_KERNEL(bt709_yuv420, bt709_to_rgb, kExactYuv420)
LOX_RGBA_KERNEL(bt709_fr_yuv420, bt709_full_to_rgb, kExactYuv420)

}  // extern "C"
