// SPDX-License-Identifier: Apache-2.0
//
// Conversions between YUV layouts. Whole pictures are made of plane copies and
// of the plane helpers, which are exported too.
#include "csc/yuv_layout.h"

#include <cstddef>
#include <cstdint>

#include "common/copy.h"
#include "csc/kernel_args.h"
#include "csc/layout_rows.h"
#include "orumlox/common.h"

namespace lox {

namespace {

void copy_luma(const KernelArgs &args) {
  vexo_cpy_8b(args.src_plane[0], args.src_width[0], args.src_height[0],
              args.src_stride[0], args.dst_stride[0], args.dst_plane[0]);
}

// Calls plane(from, to) for both chroma planes of a planar source. They keep
// their places, or change them (`crossed`).
template <class Plane>
void for_chroma(bool crossed, Plane plane) {
  plane(1, crossed ? 2 : 1);
  plane(2, crossed ? 1 : 2);
}

void halve_chroma_rows(bool crossed, const KernelArgs &args) {
  copy_luma(args);
  for_chroma(crossed, [&](int from, int to) {
    vexo_csc_1x2_to_1x1(args.src_plane[from], args.src_width[from],
                        args.src_height[from], args.src_stride[from],
                        args.dst_stride[to], args.dst_plane[to]);
  });
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

// Takes pairs apart; `first` and `second` are the planes that their bytes go
// to.
void split_pairs(int first, int second, const KernelArgs &args) {
  copy_luma(args);
  split_rows(args.src_plane[1], int64_t{2} * args.src_width[1],
             args.src_height[1], args.src_stride[1], args.dst_stride[first],
             args.dst_stride[second], args.dst_plane[first],
             args.dst_plane[second]);
}

void merge_pairs(int first, int second, const KernelArgs &args) {
  copy_luma(args);
  vexo_csc_8b8b_pck(args.src_plane[first], args.src_plane[second],
                    args.src_width[1], args.src_height[1],
                    args.src_stride[first], args.src_stride[second],
                    args.dst_stride[1], args.dst_plane[1]);
}

// Finds a row of four planes, of which some may be null.
template <class Byte>
void rows_of(Byte *const (&planes)[4], const int32_t (&strides)[4],
             ptrdiff_t row, Byte *(&rows)[4]) {
  for (int i = 0; i < 4; ++i) {
    rows[i] = planes[i] == nullptr ? nullptr : planes[i] + row * strides[i];
  }
}

int64_t swapped_bytes(int32_t stride, int32_t rows) {
  return int64_t{static_cast<int16_t>(stride)} * static_cast<int16_t>(rows);
}

void swap_in_place(uint8_t *plane, int64_t pairs) {
  layout_rows().swap(plane, plane, static_cast<ptrdiff_t>(pairs));
}

// The same as copying the pairs and then swapping stride x rows bytes in place,
// in one pass. The stride must keep rows apart and pairs in phase, and the
// count must not wrap.
void swap_pairs_in_one_pass(const KernelArgs &args, int32_t rows) {
  const int32_t stride = args.dst_stride[1];
  const int32_t pairs = args.src_width[1];
  const int32_t copied = args.src_height[1];
  // The copy rounds strides down to whole pairs.
  const ptrdiff_t src_stride = args.src_stride[1] & ~1;
  const auto swap = layout_rows().swap;
  if (2 * pairs == stride && src_stride == stride && copied == rows) {
    swap(args.src_plane[1], args.dst_plane[1], ptrdiff_t{pairs} * rows);
    return;
  }
  for (int32_t row = 0; row < rows || row < copied; ++row) {
    uint8_t *const dst = args.dst(1, row);
    int32_t done = 0;
    if (row < copied) {
      const uint8_t *const src = args.src_plane[1] + row * src_stride;
      if (row >= rows) {
        copy_plane(dst, 0, src, 0, int64_t{2} * pairs, 1);
        continue;
      }
      swap(src, dst, pairs);
      done = pairs;
    }
    swap_in_place(dst + ptrdiff_t{2} * done, stride / 2 - done);
  }
}

}  // namespace

void yuv420_to_yv12(LOX_PARAMETERS) {
  const KernelArgs args = LOX_ARGUMENTS;
  copy_luma(args);
  // Quirk: each chroma plane is read with the other's stride, because callers
  // know it so. With equal strides this is the plain exchange.
  for_chroma(true, [&](int from, int to) {
    vexo_cpy_8b(src_plane[from], src_width[from], src_height[from],
                src_stride[to], dst_stride[to], dst_plane[to]);
  });
}

void nv12_to_nv21(LOX_PARAMETERS) {
  const KernelArgs args = LOX_ARGUMENTS;
  // The exchange always touches a pair, which an empty picture need not have.
  if (args.empty()) return;
  copy_luma(args);
  const int32_t stride = dst_stride[1];
  const int32_t rows = src_height[0] / 2;
  const bool apart = src_width[1] >= 1 && stride % 2 == 0 &&
                     int64_t{2} * src_width[1] <= stride;
  if (apart && stride <= INT16_MAX && rows >= 1 && rows <= INT16_MAX) {
    swap_pairs_in_one_pass(args, rows);
    return;
  }
  vexo_cpy_16b(src_plane[1], src_width[1], src_height[1], src_stride[1], stride,
               dst_plane[1]);
  vexo_csc_swap_8byte8(dst_plane[1], stride, rows);
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
  const int64_t bytes = lox::swapped_bytes(stride, rows);
  // Quirk: the first pair always, because the end is looked for behind each
  // pair; for the same reason an odd count's last pair is exchanged whole.
  lox::swap_in_place(plane, bytes < 1 ? 1 : bytes / 2 + bytes % 2);
}

void vexo_csc_yuv420_to_nv12(LOX_PARAMETERS) {
  lox::merge_pairs(1, 2, LOX_ARGUMENTS);
}
void vexo_csc_yuv420_to_nv21(LOX_PARAMETERS) {
  lox::merge_pairs(2, 1, LOX_ARGUMENTS);
}
void vexo_csc_nv12_to_yuv420(LOX_PARAMETERS) {
  lox::split_pairs(1, 2, LOX_ARGUMENTS);
}
void vexo_csc_nv12_to_yv12(LOX_PARAMETERS) {
  lox::split_pairs(2, 1, LOX_ARGUMENTS);
}
void vexo_csc_nv21_to_yuv420(LOX_PARAMETERS) {
  lox::split_pairs(2, 1, LOX_ARGUMENTS);
}
void vexo_csc_nv21_to_yv12(LOX_PARAMETERS) {
  lox::split_pairs(1, 2, LOX_ARGUMENTS);
}
void vexo_csc_nv21_to_nv12(LOX_PARAMETERS) {
  lox::nv12_to_nv21(src_plane, src_width, src_height, src_stride, dst_stride,
                    dst_plane);
}
void vexo_csc_yuv422n_to_yuv420(LOX_PARAMETERS) {
  lox::halve_chroma_rows(false, LOX_ARGUMENTS);
}
void vexo_csc_yuv422n_to_yv12(LOX_PARAMETERS) {
  lox::halve_chroma_rows(true, LOX_ARGUMENTS);
}
void vexo_csc_yv16_to_yv12(LOX_PARAMETERS) {
  lox::halve_chroma_rows(false, LOX_ARGUMENTS);
}
void vexo_csc_yv16_to_yuv420(LOX_PARAMETERS) {
  lox::halve_chroma_rows(true, LOX_ARGUMENTS);
}

void vexo_csc_yuv420_to_yuv422n(LOX_PARAMETERS) {
  lox::copy_luma(LOX_ARGUMENTS);
  lox::for_chroma(false, [&](int from, int to) {
    vexo_csc_1x1_to_1x2(src_plane[from], src_width[from], src_height[from],
                        src_stride[from], dst_stride[to], dst_plane[to]);
  });
}

void vexo_csc_yuv444_to_yuv420(LOX_PARAMETERS) {
  lox::copy_luma(LOX_ARGUMENTS);
  lox::for_chroma(false, [&](int from, int to) {
    vexo_csc_2x2_to_1x1(src_plane[from], src_width[from], src_height[from],
                        src_stride[from], dst_stride[to], dst_plane[to]);
  });
}

void vexo_csc_yuyv_to_yuv420(LOX_PARAMETERS) {
  const lox::KernelArgs args = LOX_ARGUMENTS;
  const lox::LayoutRows &kernels = lox::layout_rows();
  if (args.empty()) return;
  for (int32_t row = 0; row < src_height[0]; ++row) {
    // The first row of two stores its chroma, the second averages it with its
    // own.
    const auto convert = row % 2 == 0 ? kernels.yuyv : kernels.yuyv_average;
    convert(args.src(0, row), args.dst(0, row), args.dst(1, row / 2),
            args.dst(2, row / 2), src_width[0]);
  }
}

void vexo_csc_yuv420Planar16_to_yuv420Planar(LOX_PARAMETERS) {
  for (int plane = 0; plane < 3; ++plane) {
    lox::convert_rows(lox::layout_rows().narrow_10_to_8, LOX_ARGUMENTS, plane);
  }
}

}  // extern "C"
