// SPDX-License-Identifier: Apache-2.0
// Camera frames, pixel by pixel.
#include <orumlox/camera.h>

#include <algorithm>
#include <cstdlib>

#include "rules/colours.h"
#include "rules/rules.h"

namespace lox_test {
namespace {

struct Crop {
  int64_t x, y, width, height;
};

bool is_valid(const vexo_camera_frame &f, const vexo_camera_options &o,
              const Crop &c, const vexo_img &dst) {
  const bool quarter = o.rotation == 90 || o.rotation == 270;
  const int64_t width = quarter ? c.height : c.width;
  bool valid = f.width > 0 && f.height > 0 && c.x >= 0 && c.y >= 0 &&
               c.width > 0 && c.height > 0 && c.x + c.width <= f.width &&
               c.y + c.height <= f.height && o.rotation >= 0 &&
               o.rotation <= 270 && o.rotation % 90 == 0 &&
               (o.mirror | 1) == 1 && f.reserved[4] == 0 &&
               o.reserved[9] == 0 && dst.width[0] == width &&
               dst.height[0] == (quarter ? c.width : c.height) &&
               std::abs(dst.stride[0]) >= width * rgb_layout(dst.format).bytes;
  for (int p = 0; p < 3; ++p) {
    const int half = p == 0 ? 1 : 2;
    const int64_t step = f.pixel_stride[p];
    const int64_t columns = (int64_t{f.width} + half - 1) / half;
    const int64_t last = (c.y + c.height - 1) / half * f.row_stride[p] +
                         (c.x + c.width - 1) / half * step;
    valid = valid && (step == 1 || step == 2) &&
            f.row_stride[p] >= (columns - 1) * step + 1 &&
            last < static_cast<int64_t>(f.bytes[p]);
  }
  return valid;
}

int32_t camera_to_rgb(const Function &, const vexo_camera_frame *frame,
                      const vexo_camera_options *options, const vexo_img *dst) {
  const vexo_camera_frame &f = *frame;
  const vexo_camera_options o =
      options == nullptr ? vexo_camera_options{} : *options;
  for (const uint8_t *const plane : f.plane) {
    if (plane == nullptr) return VEXO_ERR_ARG;
  }
  constexpr int32_t kStandards[] = {0, 1, 10, 11};
  if ((dst->format != VEXO_FMT_RGBA8888 && dst->format != VEXO_FMT_RGB565) ||
      std::count(kStandards, kStandards + 4, f.color_std) == 0 ||
      (dst->color_std != 0 && dst->color_std != f.color_std)) {
    return VEXO_ERR_UNSUPPORTED;
  }
  const Crop c = {
      o.crop_x, o.crop_y,
      o.crop_width == 0 ? int64_t{f.width} - o.crop_x : o.crop_width,
      o.crop_height == 0 ? int64_t{f.height} - o.crop_y : o.crop_height};
  if (!is_valid(f, o, c, *dst)) return VEXO_ERR_ARG;

  const Rgb &layout = rgb_layout(dst->format);
  // Codes of a rotation to the right.
  constexpr uint32_t kCodes[] = {0, 2, 3, 1};
  // Columns are counted from an even one.
  const int64_t first = c.x / 2 * 2;
  const int64_t tail = (c.x + c.width - first) / 8 * 8;
  for (int32_t y = 0; y < c.height; ++y) {
    for (int32_t x = 0; x < c.width; ++x) {
      const auto sample = [&](int p) -> int32_t {
        const int half = p == 0 ? 1 : 2;
        return f.plane[p][(c.y + y) / half * f.row_stride[p] +
                          (c.x + x) / half * f.pixel_stride[p]];
      };
      const Channels rgb =
          to_rgb(f.color_std, {sample(0), sample(1), sample(2)},
                 c.x + x - first >= tail);
      Point to = rotated(
          kCodes[o.rotation / 90],
          {static_cast<int32_t>(c.width), static_cast<int32_t>(c.height)}, x,
          y);
      if (o.mirror == 1) to.x = dst->width[0] - 1 - to.x;
      layout.put(rgb, dst->plane[0] + int64_t{to.y} * dst->stride[0] +
                          int64_t{to.x} * layout.bytes);
    }
  }
  return VEXO_OK;
}

}  // namespace

std::vector<Rule> camera_rules() {
  return rules_for(vexo_camera_to_rgb, camera_to_rgb);
}

}  // namespace lox_test
