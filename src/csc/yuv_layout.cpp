// SPDX-License-Identifier: Apache-2.0
//
// Conversions between YUV layouts. Whole pictures are made of plane copies and
// of the plane helpers, which are exported too.
#include <cstddef>
#include <cstdint>

#include "common/copy.h"
#include "csc/drivers.h"
#include "csc/kernel_args.h"
#include "csc/layout_rows.h"
#include "orumlox/common.h"
#include "orumlox/csc.h"

namespace lox {

namespace {

void copy_luma(const KernelArgs &args) {
  if (args.empty()) return;
  const RowRange rows = args.rows();
  vexo_cpy_8b(args.src(0, rows.begin), args.src_width[0], rows.end - rows.begin,
              args.src_stride[0], args.dst_stride[0], args.dst(0, rows.begin));
}

// Calls plane(from, to) for both chroma planes of a planar source.
template <class Plane>
void for_chroma(int order, Plane plane) {
  plane(1, order == kCrossed ? 2 : 1);
  plane(2, order == kCrossed ? 1 : 2);
}

// Calls work(rows, first, second) with the planes that the bytes of pairs are
// in, unless there are none.
template <class Work>
void with_chroma(const KernelArgs &args, int order, Work work) {
  if (args.empty(1)) return;
  const int first = order == kCrossed ? 2 : 1;
  work(args.rows_of(args.src_height[1]), first, 3 - first);
}

// Takes rows of `bytes` bytes apart; without padding as one run.
void split_rows(const uint8_t *src, int64_t bytes, int32_t height,
                int32_t src_stride, int32_t stride_a, int32_t stride_b,
                uint8_t *a, uint8_t *b) {
  if (bytes < 1 || height < 1) return;
  const auto deinterleave = layout_rows().deinterleave;
  if (bytes % 2 == 0 && src_stride == bytes && stride_a == bytes / 2 &&
      stride_b == bytes / 2) {
    deinterleave(src, a, b, static_cast<ptrdiff_t>(bytes) * height);
    return;
  }
  for (ptrdiff_t row = 0; row < height; ++row) {
    deinterleave(src + row * src_stride, a + row * stride_a, b + row * stride_b,
                 static_cast<ptrdiff_t>(bytes));
  }
}

// Finds a row of four planes, of which some may be null.
template <class Byte>
void rows_of(Byte *const (&planes)[4], const int32_t (&strides)[4],
             ptrdiff_t row, Byte *(&rows)[4]) {
  for (int i = 0; i < 4; ++i) {
    rows[i] = planes[i] == nullptr ? nullptr : planes[i] + row * strides[i];
  }
}

// How many pairs vexo_csc_swap_8byte8 exchanges. Quirk: the first one always,
// because the end is looked for behind each pair; for the same reason an odd
// count's last pair is exchanged whole.
int64_t swapped_pairs(int32_t stride, int32_t rows) {
  const int64_t bytes =
      int64_t{static_cast<int16_t>(stride)} * static_cast<int16_t>(rows);
  return bytes < 1 ? 1 : bytes / 2 + bytes % 2;
}

void swap_in_place(uint8_t *plane, int64_t pairs) {
  layout_rows().swap(plane, plane, static_cast<ptrdiff_t>(pairs));
}

// The same as copying the pairs and then swapping stride x swapped bytes in
// place, in one pass. The stride must keep rows apart and pairs in phase, and
// the count must not wrap.
void swap_pairs_in_one_pass(const KernelArgs &args, RowRange rows,
                            int32_t swapped) {
  const int32_t stride = args.dst_stride[1];
  const int32_t pairs = args.src_width[1];
  const int32_t copied = args.src_height[1];
  // The copy rounds strides down to whole pairs.
  const ptrdiff_t src_stride = args.src_stride[1] & ~1;
  const auto swap = layout_rows().swap;
  const auto source = [&](int32_t row) {
    return args.src_plane[1] + row * src_stride;
  };
  if (2 * pairs == stride && src_stride == stride && copied == swapped) {
    swap(source(rows.begin), args.dst(1, rows.begin),
         ptrdiff_t{pairs} * (rows.end - rows.begin));
    return;
  }
  for (int32_t row = rows.begin; row < rows.end; ++row) {
    uint8_t *const dst = args.dst(1, row);
    int32_t done = 0;
    if (row < copied) {
      if (row >= swapped) {
        copy_plane(dst, 0, source(row), 0, int64_t{2} * pairs, 1);
        continue;
      }
      swap(source(row), dst, pairs);
      done = pairs;
    }
    swap_in_place(dst + ptrdiff_t{2} * done, stride / 2 - done);
  }
}

// The same of any stride and count. A range has the pairs of the run that begin
// in its rows as they are copied, the last range what is beyond them.
void copy_and_swap_pairs(const KernelArgs &args, RowRange rows,
                         int32_t swapped) {
  const int32_t stride = args.dst_stride[1];
  const int64_t step = stride & ~1;
  const int64_t src_step = args.src_stride[1] & ~1;
  const int32_t copied = args.src_height[1];
  uint8_t *const plane = args.dst_plane[1];
  const int32_t end = rows.end < copied ? rows.end : copied;
  if (rows.begin < end && !args.empty(1)) {
    vexo_cpy_16b(args.src_plane[1] + rows.begin * src_step, args.src_width[1],
                 end - rows.begin, args.src_stride[1], stride,
                 plane + rows.begin * step);
  }
  const int64_t all = swapped_pairs(stride, swapped);
  const auto pairs_before = [&](int32_t row) {
    const int64_t pairs = step < 0 ? (row == 0 ? 0 : all) : row * (step / 2);
    return pairs < all ? pairs : all;
  };
  const int64_t first = pairs_before(rows.begin);
  // Several ranges may end with the last row of chroma, one with the picture's.
  const bool is_last = args.asked.end >= args.src_height[0];
  const int64_t last = is_last ? all : pairs_before(rows.end);
  swap_in_place(plane + 2 * first, last - first);
}

}  // namespace

void halve_chroma_rows(const KernelArgs &args, int order, int) {
  copy_luma(args);
  for_chroma(order, [&](int from, int to) {
    if (args.empty(from)) return;
    const RowRange rows = args.rows_of(args.src_height[from] / 2);
    copy_plane(args.dst(to, rows.begin), args.dst_stride[to],
               args.src(from, ptrdiff_t{2} * rows.begin),
               int64_t{2} * args.src_stride[from], args.src_width[from],
               rows.end - rows.begin);
  });
}

void double_chroma_rows(const KernelArgs &args, int order, int) {
  copy_luma(args);
  for_chroma(order, [&](int from, int to) {
    if (args.empty(from) || args.src_height[from] > INT32_MAX / 2) return;
    const RowRange rows = args.rows_of(2 * args.src_height[from]);
    for (int32_t row = rows.begin; row < rows.end;) {
      // Both rows of a source row, unless one alone is asked for.
      const int32_t count = row % 2 == 0 && row + 1 < rows.end ? 2 : 1;
      copy_plane(args.dst(to, row), args.dst_stride[to],
                 args.src(from, row / 2), 0, args.src_width[from], count);
      row += count;
    }
  });
}

void halve_chroma(const KernelArgs &args, int order, int) {
  copy_luma(args);
  const auto even = layout_rows().even;
  for_chroma(order, [&](int from, int to) {
    if (args.empty(from)) return;
    const int32_t height = args.src_height[from];
    const RowRange rows = args.rows_of(height / 2 + height % 2);
    for (ptrdiff_t row = rows.begin; row < rows.end; ++row) {
      even(args.src(from, 2 * row), args.dst(to, row), args.src_width[from]);
    }
  });
}

void pairs_to_planes(const KernelArgs &args, int order, int) {
  copy_luma(args);
  with_chroma(args, order, [&](RowRange rows, int first, int second) {
    split_rows(args.src(1, rows.begin), int64_t{2} * args.src_width[1],
               rows.end - rows.begin, args.src_stride[1],
               args.dst_stride[first], args.dst_stride[second],
               args.dst(first, rows.begin), args.dst(second, rows.begin));
  });
}

void planes_to_pairs(const KernelArgs &args, int order, int) {
  copy_luma(args);
  with_chroma(args, order, [&](RowRange rows, int first, int second) {
    vexo_csc_8b8b_pck(args.src(first, rows.begin), args.src(second, rows.begin),
                      args.src_width[1], rows.end - rows.begin,
                      args.src_stride[first], args.src_stride[second],
                      args.dst_stride[1], args.dst(1, rows.begin));
  });
}

void exchange_planes(const KernelArgs &args, int, int) {
  copy_luma(args);
  // Quirk: each chroma plane is read with the other's stride, because callers
  // know it so. With equal strides this is the plain exchange.
  for_chroma(kCrossed, [&](int from, int to) {
    if (args.empty(from)) return;
    const int32_t src_stride = args.src_stride[to];
    const RowRange rows = args.rows_of(args.src_height[from]);
    vexo_cpy_8b(args.src_plane[from] + ptrdiff_t{rows.begin} * src_stride,
                args.src_width[from], rows.end - rows.begin, src_stride,
                args.dst_stride[to], args.dst(to, rows.begin));
  });
}

void exchange_pairs(const KernelArgs &args, int, int) {
  // The exchange always touches a pair, which an empty picture need not have.
  if (args.empty() || args.asked.begin == args.asked.end) return;
  copy_luma(args);
  const int32_t stride = args.dst_stride[1];
  const int32_t swapped = args.src_height[0] / 2;
  const int32_t copied = args.src_width[1] < 1 ? 0 : args.src_height[1];
  const int32_t count = copied > swapped ? copied : swapped;
  const bool apart = args.src_width[1] >= 1 && stride % 2 == 0 &&
                     int64_t{2} * args.src_width[1] <= stride;
  if (apart && stride <= INT16_MAX && swapped >= 1 && swapped <= INT16_MAX) {
    swap_pairs_in_one_pass(args, args.rows_of(count), swapped);
    return;
  }
  copy_and_swap_pairs(args, args.rows_of(count), swapped);
}

void yuyv_to_yuv420(const KernelArgs &args, int, int) {
  const LayoutRows &kernels = layout_rows();
  if (args.empty()) return;
  const RowRange rows = args.rows();
  for (int32_t row = rows.begin; row < rows.end; ++row) {
    // The first row of two stores its chroma, the second averages it with its
    // own.
    const auto convert = row % 2 == 0 ? kernels.yuyv : kernels.yuyv_average;
    convert(args.src(0, row), args.dst(0, row), args.dst(1, row / 2),
            args.dst(2, row / 2), args.src_width[0]);
  }
}

void narrow_planes(const KernelArgs &args, int, int) {
  for (int plane = 0; plane < 3; ++plane) {
    convert_rows(layout_rows().narrow_10_to_8, args, plane);
  }
}

}  // namespace lox

extern "C" {

void vexo_csc_2x2_to_1x1(const uint8_t *src, int32_t width, int32_t height,
                         int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  if (width < 1 || height < 1) return;
  const auto even = lox::layout_rows().even;
  const ptrdiff_t rows = ptrdiff_t{height / 2} + height % 2;
  for (ptrdiff_t row = 0; row < rows; ++row) {
    even(src + 2 * row * src_stride, dst + row * dst_stride, width);
  }
}

void vexo_csc_1x2_to_1x1(const uint8_t *src, int32_t width, int32_t height,
                         int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  lox::copy_plane(dst, dst_stride, src, int64_t{2} * src_stride, width,
                  height / 2);
}

void vexo_csc_1x1_to_1x2(const uint8_t *src, int32_t width, int32_t height,
                         int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  if (width < 1 || height < 1) return;
  for (ptrdiff_t row = 0; row < height; ++row) {
    lox::copy_plane(dst + 2 * row * dst_stride, dst_stride,
                    src + row * src_stride, 0, width, 2);
  }
}

void vexo_csc_8b8b_unpck(const uint8_t *src, int32_t width, int32_t height,
                         int32_t src_stride, int32_t dst_stride_a,
                         int32_t dst_stride_b, uint8_t *dst_a, uint8_t *dst_b) {
  lox::split_rows(src, width, height, src_stride, dst_stride_a, dst_stride_b,
                  dst_a, dst_b);
}

void vexo_csc_8b8b_pck(const uint8_t *src_a, const uint8_t *src_b,
                       int32_t width, int32_t height, int32_t src_stride_a,
                       int32_t src_stride_b, int32_t dst_stride, uint8_t *dst) {
  if (width < 1 || height < 1) return;
  const auto interleave = lox::layout_rows().interleave;
  if (src_stride_a == width && src_stride_b == width &&
      dst_stride == int64_t{2} * width) {
    interleave(src_a, src_b, dst, ptrdiff_t{width} * height);
    return;
  }
  for (ptrdiff_t row = 0; row < height; ++row) {
    interleave(src_a + row * src_stride_a, src_b + row * src_stride_b,
               dst + row * dst_stride, width);
  }
}

void vexo_csc_8b8b8b8b_unpack(const uint8_t *src, int32_t width, int32_t height,
                              int32_t src_stride, int32_t dst_stride_0,
                              int32_t dst_stride_1, int32_t dst_stride_2,
                              int32_t dst_stride_3, uint8_t *dst_0,
                              uint8_t *dst_1, uint8_t *dst_2, uint8_t *dst_3) {
  if (width < 1 || height < 1) return;
  const int32_t strides[] = {dst_stride_0, dst_stride_1, dst_stride_2,
                             dst_stride_3};
  uint8_t *const planes[] = {dst_0, dst_1, dst_2, dst_3};
  for (ptrdiff_t row = 0; row < height; ++row) {
    uint8_t *rows[4];
    lox::rows_of(planes, strides, row, rows);
    lox::layout_rows().deinterleave4(src + row * src_stride, rows, width);
  }
}

void vexo_csc_8b8b8b8b_pack(uint8_t *dst, int32_t width, int32_t height,
                            int32_t dst_stride, int32_t src_stride_0,
                            int32_t src_stride_1, int32_t src_stride_2,
                            int32_t src_stride_3, const uint8_t *src_0,
                            const uint8_t *src_1, const uint8_t *src_2,
                            const uint8_t *src_3) {
  if (width < 1 || height < 1) return;
  const int32_t strides[] = {src_stride_0, src_stride_1, src_stride_2,
                             src_stride_3};
  const uint8_t *const planes[] = {src_0, src_1, src_2, src_3};
  for (ptrdiff_t row = 0; row < height; ++row) {
    const uint8_t *rows[4];
    lox::rows_of(planes, strides, row, rows);
    lox::layout_rows().interleave4(rows, dst + row * dst_stride, width);
  }
}

void vexo_csc_swap_8byte8(uint8_t *plane, int32_t stride, int32_t rows) {
  lox::swap_in_place(plane, lox::swapped_pairs(stride, rows));
}

#define LOX_LAYOUT(name, driver, order) \
  LOX_KERNEL(name, driver, order, kNothing)
LOX_LAYOUT(yuv420_to_nv12, planes_to_pairs, kInOrder)
LOX_LAYOUT(yuv420_to_nv21, planes_to_pairs, kCrossed)
LOX_LAYOUT(nv12_to_yuv420, pairs_to_planes, kInOrder)
LOX_LAYOUT(nv12_to_yv12, pairs_to_planes, kCrossed)
LOX_LAYOUT(nv21_to_yuv420, pairs_to_planes, kCrossed)
LOX_LAYOUT(nv21_to_yv12, pairs_to_planes, kInOrder)
LOX_LAYOUT(nv21_to_nv12, exchange_pairs, kNothing)
LOX_LAYOUT(yuv422n_to_yuv420, halve_chroma_rows, kInOrder)
LOX_LAYOUT(yuv422n_to_yv12, halve_chroma_rows, kCrossed)
LOX_LAYOUT(yv16_to_yv12, halve_chroma_rows, kInOrder)
LOX_LAYOUT(yv16_to_yuv420, halve_chroma_rows, kCrossed)
LOX_LAYOUT(yuv420_to_yuv422n, double_chroma_rows, kInOrder)
LOX_LAYOUT(yuv444_to_yuv420, halve_chroma, kInOrder)
LOX_LAYOUT(yuyv_to_yuv420, yuyv_to_yuv420, kNothing)
LOX_LAYOUT(yuv420Planar16_to_yuv420Planar, narrow_planes, kNothing)

}  // extern "C"
