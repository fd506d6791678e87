// SPDX-License-Identifier: Apache-2.0
#include "camera/rows.h"

#include "csc/layout_rows.h"
#include "csc/rgb_rows.h"
#include "rot/rotate_rows.h"

namespace lox {

// What two rows are copied together in, and their pixels before they become
// words.
struct CameraRows::Scratch {
  uint8_t luma[2][kColumns];
  uint8_t chroma[2][kColumns / 2];
  alignas(64) uint8_t rgba[2][kColumns * 4];
};

bool CameraRows::converts(int32_t standard, int32_t format) {
  return (format == VEXO_FMT_RGBA8888 || format == VEXO_FMT_RGB565) &&
         (standard == VEXO_STD_DEFAULT || standard == VEXO_STD_BT601_FULL ||
          standard == VEXO_STD_BT709 || standard == VEXO_STD_BT709_FULL);
}

CameraRows::CameraRows(const vexo_camera_frame &frame, int32_t x, int32_t y,
                       int32_t height, int32_t format)
    : height_(height),
      layout_(format == VEXO_FMT_RGB565 ? kRgb565 : kRgba8888),
      to_565_(layout_ == kRgb565 && frame.color_std != VEXO_STD_DEFAULT) {
  for (int p = 0; p < 3; ++p) {
    const int shift = p == 0 ? 0 : 1;
    const ptrdiff_t stride = frame.row_stride[p];
    const int32_t step = frame.pixel_stride[p];
    plane_[p] = {
        frame.plane[p] + stride * (y >> shift) + ptrdiff_t{x >> shift} * step,
        stride, step, step != 1};
  }
  // U and V in turn: then all that lies between the first and the last of a row
  // are samples of one or the other, and each is in its plane's own buffer. Of
  // BT.709 there are no kernels of pairs.
  const bool in_turn = plane_[1].step == 2 && plane_[2].step == 2 &&
                       plane_[1].stride == plane_[2].stride &&
                       frame.color_std != VEXO_STD_BT709 &&
                       frame.color_std != VEXO_STD_BT709_FULL;
  YuvRowKind kind = kRowPlanar;
  if (in_turn && plane_[2].first == plane_[1].first + 1) {
    kind = kRowUv;
  } else if (in_turn && plane_[1].first == plane_[2].first + 1) {
    kind = kRowVu;
    plane_[1].first = plane_[2].first;
  }
  if (kind != kRowPlanar) {
    plane_[1].apart = plane_[2].apart = false;
    planes_ = 2;
  }

  const CscRows &kernels = yuv_to_rgb_rows();
  switch (frame.color_std) {
    case VEXO_STD_BT601_FULL:
      kernels_ = kernels.bt601_full[kind];
      break;
    case VEXO_STD_BT709:
      kernels_ = kernels.bt709_planar;
      break;
    case VEXO_STD_BT709_FULL:
      kernels_ = kernels.bt709_full_planar;
      break;
    default:
      kernels_ = kernels.yuv_to_rgb[kind][layout_];
  }
}

Writing CameraRows::writing(uint8_t *first, ptrdiff_t step, int32_t width,
                            int32_t height) const {
  if (!any_width()) return {false, false};
  const auto stride = static_cast<int32_t>(step);
  return writing_of(
      layout_, {nullptr, &width, &height, nullptr, &stride, &first, kAllRows});
}

const uint8_t *CameraRows::samples(int p, int32_t row, int32_t x, int32_t count,
                                   uint8_t *scratch) const {
  const Plane &plane = plane_[p];
  const uint8_t *const first =
      plane.first + plane.stride * row + ptrdiff_t{x} * plane.step;
  if (!plane.apart) return first;
  layout_rows().even(first, scratch, 2 * ptrdiff_t{count} - 1);
  return scratch;
}

// Stores nothing, so compilers would take a call of it for one without effect.
[[gnu::always_inline]] inline void CameraRows::fetch_pair(int32_t row,
                                                          int32_t x,
                                                          int32_t width) const {
  for (int p = 0; p < planes_; ++p) {
    const int shift = p == 0 ? 0 : 1;
    const Plane &plane = plane_[p];
    const ptrdiff_t bytes = ptrdiff_t{width >> shift} * plane.step;
    for (int32_t y = row >> shift; y <= (row + 1) >> shift; ++y) {
      const uint8_t *const first =
          plane.first + plane.stride * y + ptrdiff_t{x >> shift} * plane.step;
      fetch_run(reinterpret_cast<uintptr_t>(first), bytes);
    }
  }
}

void CameraRows::convert(YuvToRgbRows *rows, int32_t width,
                         Scratch *scratch) const {
  const bool two = rows->rgb[1] != nullptr;
  uint8_t *const to[2] = {rows->rgb[0], rows->rgb[1]};
  if (to_565_) {
    rows->rgb[0] = scratch->rgba[0];
    rows->rgb[1] = scratch->rgba[1];
  }
  (two ? kernels_.two_rows : kernels_.one_row)(*rows, width);
  if (!to_565_) return;
  const auto to_565 = rgb_rows().rgba8888_to_rgb565;
  to_565(rows->rgb[0], to[0], width);
  if (two) to_565(rows->rgb[1], to[1], width);
}

CameraRows CameraRows::turned(int32_t x, int32_t y, int32_t columns,
                              int32_t count, bool back, uint8_t *planes) const {
  CameraRows result = *this;
  for (int p = 0; p < planes_; ++p) {
    const int shift = p == 0 ? 0 : 1;
    const Plane &plane = plane_[p];
    const ptrdiff_t width = (columns + shift) >> shift;
    const ptrdiff_t height = (count + shift) >> shift;
    const ptrdiff_t pitch = ptrdiff_t{kMostTurned >> shift} * plane.step;
    const uint8_t *const first = plane.first + plane.stride * (y >> shift) +
                                 ptrdiff_t{x >> shift} * plane.step;
    rotate_rows().transpose[plane.step - 1](
        back ? first + (height - 1) * plane.stride : first,
        back ? -plane.stride : plane.stride, planes, pitch, width, height);
    result.plane_[p] = {planes, pitch, plane.step, false};
    planes += pitch * (kTurnedColumns >> shift);
  }
  return result;
}

// Of rows that nobody takes steps may be more than there is memory.
constexpr ptrdiff_t times(ptrdiff_t step, int32_t rows) {
  return static_cast<ptrdiff_t>(static_cast<size_t>(step) *
                                static_cast<size_t>(rows));
}

void CameraRows::make(RowRange rows, int32_t x, int32_t width,
                      Target to) const {
  Scratch scratch;
  const int32_t half = width / 2 + width % 2;
  for (int32_t y = rows.begin; y < rows.end;) {
    const bool two = y % 2 == 0 && y + 1 < rows.end;
    // Pairs of rows that lie in place are one call. Kernels of words fetch what
    // they read next by themselves; for others it comes best from some pairs
    // further down.
    const bool fetch = to.fetch_source && (layout_ != kRgb565 || to_565_);
    const int32_t pairs = !two                    ? 0
                          : any_width() && !fetch ? (rows.end - y) / 2
                                                  : 1;
    YuvToRgbRows at = {{samples(0, y, x, width, scratch.luma[0]), nullptr},
                       {samples(1, y / 2, x / 2, half, scratch.chroma[0]),
                        samples(2, y / 2, x / 2, half, scratch.chroma[1])},
                       {to.first, nullptr},
                       to.writing.stream,
                       to.writing.fetch};
    if (two) {
      at.y[1] = samples(0, y + 1, x, width, scratch.luma[1]);
      at.rgb[1] = to.first + to.step;
      at.count = pairs;
      at.y_step = times(plane_[0].stride, 2);
      at.chroma_step[0] = plane_[1].stride;
      at.chroma_step[1] = plane_[2].stride;
      at.rgb_step = times(to.step, 2);
      at.far = to.fetch_source;
    }
    constexpr int32_t kAhead = 32;
    if (two && fetch && y < height_ - kAhead - 1) {
      fetch_pair(y + kAhead, x, width);
    }
    convert(&at, width, &scratch);
    const int32_t done = two ? 2 * pairs : 1;
    y += done;
    to.first += times(to.step, done);
  }
}

}  // namespace lox
