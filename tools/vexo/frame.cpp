// SPDX-License-Identifier: Apache-2.0
//
// The table of layouts and the memory of frames.
#include "frame.h"

#include <algorithm>
#include <limits>
#include <new>

#include "error.h"

namespace vexo {
namespace {

constexpr PlaneRule k8{1, 0, 0, 1, 1};
constexpr PlaneRule k8HalfWidth{1, 1, 0, 1, 1};
constexpr PlaneRule k8HalfHeight{1, 0, 1, 1, 1};
constexpr PlaneRule k8HalfBoth{1, 1, 1, 1, 1};
constexpr PlaneRule k8Pairs{2, 1, 1, 1, 1};
constexpr PlaneRule k16{2, 0, 0, 1, 1};
constexpr PlaneRule k16HalfBoth{2, 1, 1, 1, 1};
constexpr PlaneRule k16Pairs{4, 1, 1, 1, 1};
constexpr PlaneRule kYuvPixelPairs{2, 0, 0, 4, 1};
constexpr PlaneRule k24{3, 0, 0, 1, 1};
constexpr PlaneRule k32{4, 0, 0, 1, 1};

// Tiled layouts: a luma plane and a plane of U, V byte pairs, whole tiles each.
// 64 x 32 tiles are grouped by two columns, hence 128; a last tile row without
// a partner fills half a row of groups, hence 32.
constexpr PlaneRule tile_luma(int width, int height) {
  return {1, 0, 0, width, height};
}
constexpr PlaneRule tile_chroma(int width, int height) {
  return {2, 1, 1, width, height};
}

constexpr Layout kLayouts[] = {
    {VEXO_FMT_YUV400, "yuv400", false, 1, {k8}},
    {VEXO_FMT_YUV420, "yuv420", false, 3, {k8, k8HalfBoth, k8HalfBoth}},
    {VEXO_FMT_YUV422N, "yuv422n", false, 3, {k8, k8HalfWidth, k8HalfWidth}},
    {VEXO_FMT_YUV444, "yuv444", false, 3, {k8, k8, k8}},
    {VEXO_FMT_YV12, "yv12", false, 3, {k8, k8HalfBoth, k8HalfBoth}},
    {VEXO_FMT_YV16, "yv16", false, 3, {k8, k8HalfWidth, k8HalfWidth}},
    {VEXO_FMT_NV12, "nv12", false, 2, {k8, k8Pairs}},
    {VEXO_FMT_NV21, "nv21", false, 2, {k8, k8Pairs}},
    {VEXO_FMT_YUV422W, "yuv422w", false, 3, {k8, k8HalfHeight, k8HalfHeight}},
    {VEXO_FMT_T64X32,
     "t64x32",
     true,
     2,
     {tile_luma(128, 32), tile_chroma(128, 32)}},
    {VEXO_FMT_T16X16,
     "t16x16",
     true,
     2,
     {tile_luma(16, 16), tile_chroma(16, 8)}},
    {VEXO_FMT_T8X8, "t8x8", true, 2, {tile_luma(8, 8), tile_chroma(8, 4)}},
    {VEXO_FMT_T256X16,
     "t256x16",
     true,
     2,
     {tile_luma(256, 16), tile_chroma(256, 8)}},
    {VEXO_FMT_UYVY, "uyvy", false, 1, {kYuvPixelPairs}},
    {VEXO_FMT_YUYV, "yuyv", false, 1, {kYuvPixelPairs}},
    {VEXO_FMT_RGB565, "rgb565", false, 1, {k16}},
    {VEXO_FMT_BGR565, "bgr565", false, 1, {k16}},
    {VEXO_FMT_RGB888, "rgb888", false, 1, {k24}},
    {VEXO_FMT_BGR888, "bgr888", false, 1, {k24}},
    {VEXO_FMT_RGBA8888, "rgba8888", false, 1, {k32}},
    {VEXO_FMT_BGRA8888, "bgra8888", false, 1, {k32}},
    {VEXO_FMT_ARGB8888, "argb8888", false, 1, {k32}},
    {VEXO_FMT_ABGR8888, "abgr8888", false, 1, {k32}},
    {VEXO_FMT_YUV420PLANAR16,
     "yuv420Planar16",
     false,
     3,
     {k16, k16HalfBoth, k16HalfBoth}},
    {VEXO_FMT_P010LE, "p010le", false, 2, {k16, k16Pairs}},
};

// Odd pictures are converted a pixel wider and a row higher than they are: room
// for both, so that neither meets the next row or plane.
constexpr int64_t kRowSlack = 16;

constexpr int64_t align_up(int64_t value, int64_t unit) {
  return (value + unit - 1) / unit * unit;
}

constexpr int64_t shifted_up(int64_t value, int shift) {
  return align_up(value, int64_t{1} << shift) >> shift;
}

}  // namespace

std::span<const Layout> all_layouts() { return kLayouts; }

const Layout &layout_of(int32_t code) {
  for (const Layout &layout : kLayouts) {
    if (layout.code == code) return layout;
  }
  throw Error("no layout has the code " + std::to_string(code));
}

const Layout &layout_named(const std::string &token) {
  for (const Layout &layout : kLayouts) {
    if (token == layout.token) return layout;
  }
  throw Error("unknown format '" + token + "'; 'vexo formats' lists them");
}

bool is_rgb(const Layout &layout) {
  return layout.code >= VEXO_FMT_RGB565 &&
         layout.code < VEXO_FMT_YUV420PLANAR16;
}

void check_size(int64_t width, int64_t height, const std::string &where) {
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
    throw Error(where + ": size " + std::to_string(width) + "x" +
                std::to_string(height) + " is not within 1x1 to 32767x32767");
  }
}

Frame::Frame(const Layout &layout, int width, int height, int32_t color_std)
    : layout_(&layout), width_(width), height_(height) {
  check_size(width, height, layout.token);
  img_.format = layout.code;
  img_.color_std = color_std;
  int64_t start[3] = {};
  int64_t total = 0;
  for (int p = 0; p < layout.planes; ++p) {
    const PlaneRule &rule = layout.plane[p];
    const int64_t units = shifted_up(width, rule.x_shift);
    const int64_t lines = shifted_up(height, rule.y_shift);
    const int64_t bytes = align_up(units * rule.unit_bytes, rule.row_align);
    const int64_t rows = align_up(lines, rule.rows_align);
    // Tiles lie back to back, so a tiled plane has no room between its rows.
    const int64_t stride =
        layout.tiled ? bytes : align_up(bytes + kRowSlack, 64);
    const int64_t room = std::max(rows, align_up(height, 2) >> rule.y_shift);
    const int64_t size = align_up(stride * room, 64);
    if (size > std::numeric_limits<int32_t>::max()) {
      throw Error("a picture of " + std::to_string(width) + "x" +
                  std::to_string(height) + " " + layout.token +
                  " is too large: a plane has more than 2 GiB");
    }
    start[p] = total;
    total += size;
    row_bytes_[p] = static_cast<int>(bytes);
    img_.width[p] = static_cast<int32_t>(units);
    img_.height[p] = static_cast<int32_t>(lines);
    img_.stride[p] = static_cast<int32_t>(stride);
    img_.buf_height[p] = static_cast<int32_t>(rows);
  }
  if (total < 1 ||
      static_cast<uint64_t>(total) > std::numeric_limits<size_t>::max()) {
    throw std::bad_alloc();
  }
  // Untouched pages of a zeroed block cost nothing: a damaged header that
  // claims a huge picture does not make a huge process.
  memory_.reset(
      static_cast<uint8_t *>(std::calloc(static_cast<size_t>(total), 1)));
  if (memory_ == nullptr) throw std::bad_alloc();
  for (int p = 0; p < layout.planes; ++p) {
    img_.plane[p] = memory_.get() + start[p];
  }
}

vexo_img Frame::even_img() const {
  vexo_img img = img_;
  for (int p = 0; p < layout_->planes; ++p) {
    const PlaneRule &rule = layout_->plane[p];
    img.width[p] = (width_ + width_ % 2) >> rule.x_shift;
    img.height[p] = (height_ + height_ % 2) >> rule.y_shift;
  }
  return img;
}

}  // namespace vexo
