// SPDX-License-Identifier: Apache-2.0
// Two steps in one: the rules of both, one after the other, with the picture
// between them.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "cases/picture.h"
#include "rules/rules.h"

namespace lox_test {
namespace {

// A picture of its own memory, with room beyond rows and below the last one.
struct Between {
  std::vector<uint8_t> memory[3];
  vexo_img img = {};

  Between(int32_t format, int32_t color_std, int32_t width, int32_t height) {
    const ExactImage image = picture_image(format, width, height);
    img.format = format;
    img.color_std = color_std;
    for (int p = 0; p < 3; ++p) {
      img.width[p] = image[p].width;
      img.height[p] = image[p].height;
      const int64_t stride = std::max<int64_t>(image[p].row_bytes, 0) + 8;
      img.stride[p] = static_cast<int32_t>(stride & ~1);
      memory[p].resize(static_cast<size_t>(
          image[p].whole +
          (std::max(image[p].height, 0) + int64_t{1}) * stride));
      img.plane[p] = memory[p].data();
    }
  }
};

void take_sizes(const vexo_img &of, vexo_img *img) {
  std::copy_n(of.width, 3, img->width);
  std::copy_n(of.height, 3, img->height);
}

int32_t scale_and_convert(const Function &function, const vexo_img *src,
                          const vexo_img *dst) {
  const int32_t width = dst->width[0];
  const int32_t height = dst->height[0];
  if (vexo_format_planes(src->format) == 0) return VEXO_ERR_UNSUPPORTED;
  if (width < 1 || height < 1) return VEXO_ERR_ARG;
  Between middle(src->format, src->color_std, width, height);
  middle.img.mode = dst->mode;
  vexo_img from = *src;
  const bool same = src->width[0] == width && src->height[0] == height;
  if (same) take_sizes(middle.img, &from);
  if (src->format == VEXO_FMT_T64X32) return VEXO_ERR_UNSUPPORTED;
  if (is_tiled_code(src->format)) {
    // They have no third plane to scale, and a copy of them is themselves.
    if (!same) return VEXO_ERR_ARG;
    std::copy_n(src->plane, 3, middle.img.plane);
  } else {
    const int32_t status = scale_picture(function, &from, &middle.img);
    if (status != VEXO_OK) return status;
  }
  if (!is_rgb_code(dst->format) || width % 2 == 0) {
    return convert_picture(function, &middle.img, dst);
  }
  // Without the pixel beyond an odd width.
  Between out(dst->format, dst->color_std, width, height);
  const int64_t row = picture_image(dst->format, width, height)[0].row_bytes;
  const auto move = [&](const vexo_img &a, const vexo_img &b) {
    move_rows(a.plane[0], a.stride[0], row, height, b.stride[0], b.plane[0]);
  };
  const int32_t status = convert_picture(function, &middle.img, &out.img);
  if (status != VEXO_OK) return status;
  move(*dst, out.img);
  convert_picture(function, &middle.img, &out.img);
  move(out.img, *dst);
  return status;
}

int32_t convert_and_turn(const Function &function, const vexo_img *src,
                         uint32_t rotation, const vexo_img *dst) {
  Size size = {dst->width[0], dst->height[0]};
  if (is_quarter(rotation)) std::swap(size.width, size.height);
  Between window(src->format, src->color_std, size.width, size.height);
  Between middle(dst->format, dst->color_std, size.width, size.height);
  const int32_t status = convert_picture(function, &window.img, &middle.img);
  if (status != VEXO_OK) return status;
  if (rotation > VEXO_ROT_VERT || dst->format == VEXO_FMT_T64X32) {
    return VEXO_ERR_UNSUPPORTED;
  }
  vexo_img from = *src;
  take_sizes(window.img, &from);
  if (size.width != src->width[0] || size.height != src->height[0]) {
    const int64_t x = src->offset_x;
    const int64_t y = src->offset_y;
    if (x < 0 || y < 0 || x + size.width > src->width[0] ||
        y + size.height > src->height[0]) {
      return VEXO_ERR_ARG;
    }
    if (is_tiled_code(src->format)) return VEXO_ERR_UNSUPPORTED;
    // By how much planes are smaller.
    const ExactImage unit = exact_image(src->format, 2, 2);
    const bool packed = src->format / 100 == 1;
    const int half_x = packed || unit[1].width == 1 ? 2 : 1;
    const int half_y = unit[1].height == 1 ? 2 : 1;
    if (x % half_x != 0 || y % half_y != 0) return VEXO_ERR_UNSUPPORTED;
    for (int p = 0; p < 3 && unit[p].width > 0; ++p) {
      from.plane[p] +=
          y / (p > 0 ? half_y : 1) * src->stride[p] +
          x / (p > 0 ? half_x : 1) * (unit[p].row_bytes / unit[p].width);
    }
  }
  // Other tiles have nothing but a success that writes nothing.
  if (is_tiled_code(dst->format)) return VEXO_OK;
  // What is left out stays.
  vexo_img there = *dst;
  take_sizes(middle.img, &there);
  if (is_quarter(rotation)) {
    for (int p = 0; p < 3; ++p) std::swap(there.width[p], there.height[p]);
  }
  const uint32_t back = is_quarter(rotation) ? 3 - rotation : rotation;
  turn_picture(function, &there, back, &middle.img);
  convert_picture(function, &from, &middle.img);
  return turn_picture(function, &middle.img, rotation, dst);
}

}  // namespace

std::vector<Rule> fused_rules() {
  return {rule_for(vexo_rsz_csc, scale_and_convert),
          rule_for(vexo_csc_rot, convert_and_turn)};
}

}  // namespace lox_test
