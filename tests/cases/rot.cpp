// SPDX-License-Identifier: Apache-2.0
// Turning, mirroring, copying, windows and frames; aligned memory.
#include <orumlox/rot.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "cases/by_rows.h"
#include "cases/cases.h"

namespace lox_test {
namespace {

// A kernel vexo_rot_8b_90l or vexo_cpy_8b, by the bits of its unit.
void kernel(const Function &function, Source &source, Sink &sink) {
  const std::string_view name = function.name;
  const int unit = std::atoi(function.name + name.find("_", 5) + 1) / 8;
  // Copies of 16-bit units round strides down.
  const Rows rows = name == "vexo_cpy_16b" ? Rows::kEven : Rows::kEitherWay;
  const auto [width, height] = source.size();
  const ExactImage image = {exact_plane(width, height, unit)};
  Picture src(source);
  Picture dst(source);
  src.set(image, rows);
  dst.set(name.find("_90") < name.size() ? turned(image) : image, rows);
  function.as<vexo_rot_kernel>()(src.img.plane[0], width, height,
                                 src.img.stride[0], dst.img.stride[0],
                                 dst.img.plane[0]);
  dst.add_to(sink);
}

void block_copy(const Function &function, Source &source, Sink &sink) {
  const auto [width, height] = source.size();
  const ExactImage image = {exact_plane(width, height, 1)};
  Picture src(source);
  Picture dst(source);
  src.set(image, Rows::kEitherWay);
  dst.set(image, Rows::kEitherWay);
  function.as<decltype(mlox_blk_mcpy)>()(dst.img.plane[0], src.img.plane[0],
                                         dst.img.stride[0], src.img.stride[0],
                                         width, height);
  dst.add_to(sink);
}

// Turns by rotation codes, of which there are six, and copies.
void picture(const Function &function, Source &source, Sink &sink) {
  const bool copies = std::string_view(function.name) == "vexo_cpy";
  const auto rotation =
      static_cast<uint32_t>(copies ? 0 : source.between(0, 6));
  const auto [width, height] = source.size();
  const int32_t format = source.format();
  const ExactImage image = planes_by_code(source, format, width, height);
  Picture src(source);
  Picture dst(source);
  src.set(image);
  dst.set(rotation == 1 || rotation == 2 ? turned(image) : image);
  src.img.format = dst.img.format = format;
  if (source.one_in(8)) dst.img.format = source.format();
  const auto some = [&](int32_t y0, int32_t y1) {
    return function.as<decltype(vexo_rot_rows)>()(&src.img, rotation, &dst.img,
                                                  y0, y1);
  };
  const bool quarter = rotation == 1 || rotation == 2;
  const int32_t rows = quarter ? src.img.width[0] : src.img.height[0];
  const int32_t status =
      copies ? function.as<decltype(vexo_cpy)>()(&src.img, &dst.img)
      : takes_rows(function)
          ? by_rows(&dst, rows, format, some)
          : function.as<decltype(vexo_rot)>()(&src.img, rotation, &dst.img);
  sink.add(static_cast<uint32_t>(status));
  dst.add_to(sink);
}

// The planes of a picture that vexo_crop and vexo_padding take.
ExactImage window_planes(Source &source, int32_t format) {
  const int32_t width = source.width();
  ExactImage image = exact_image(format, width, source.height());
  if (format < VEXO_FMT_YUV400 || format == VEXO_FMT_P010LE) return {};
  // A chroma row of pairs has as many bytes as the luma row.
  if (format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21) {
    image[1].row_bytes = image[0].row_bytes;
  }
  return image;
}
// The same with room above and to the left of it.
ExactImage moved(const ExactImage &image, int32_t format, int32_t x,
                 int32_t y) {
  ExactImage result = image;
  for (int p = 0; p < 3; ++p) {
    ExactPlane &plane = result[p];
    const bool pairs = p == 1 && format != VEXO_FMT_YUV420;
    const int64_t left = p == 0 || pairs ? x : half_up(x);
    const int64_t unit = p == 0 && format >= 400 ? (format >= 500 ? 4 : 3) : 1;
    plane.row_bytes = std::max<int64_t>(plane.row_bytes, 0) + left * unit;
    plane.width += static_cast<int32_t>(left);
    plane.height = std::max(plane.height, 0) + (p == 0 ? y : half_up(y));
  }
  return result;
}

constexpr int32_t kWindowFormats[] = {
    VEXO_FMT_YUV420,   VEXO_FMT_NV12,     VEXO_FMT_NV21,     VEXO_FMT_RGB888,
    VEXO_FMT_BGR888,   VEXO_FMT_RGBA8888, VEXO_FMT_BGRA8888, VEXO_FMT_ARGB8888,
    VEXO_FMT_ABGR8888, VEXO_FMT_YUV400,   VEXO_FMT_T8X8,     VEXO_FMT_RGB565};

// `small` is the window or the picture in the frame, `large` has it at the
// offset.
void window(const Function &function, Source &source, Sink &sink) {
  const bool cuts = std::string_view(function.name) == "vexo_crop";
  const int32_t format = source.one_of(kWindowFormats);
  const int32_t x = source.between(0, 20);
  const int32_t y = source.between(0, 20);
  const ExactImage image = window_planes(source, format);
  Picture small(source);
  Picture large(source);
  small.set(image);
  large.set(moved(image, format, x, y));
  vexo_img &src = cuts ? large.img : small.img;
  vexo_img &dst = cuts ? small.img : large.img;
  src.format = format;
  src.offset_x = x;
  src.offset_y = y;
  dst.format = source.any();
  if (!cuts) {
    // Whole buffers are cleared.
    for (int p = 0; p < 3; ++p) {
      const ExactPlane plane = moved(image, format, x, y)[p];
      const int64_t rows = plane.height + source.between(0, 2);
      large.set_plane(p, plane, rows * dst.stride[p]);
      dst.buf_height[p] = static_cast<int32_t>(rows);
    }
    // A place that reaches beyond the frame.
    if (source.one_in(8)) {
      int32_t &offset = source.one_in(2) ? src.offset_x : src.offset_y;
      offset += source.between(1, INT32_MAX - 20);
    }
  }
  const auto call = function.as<decltype(vexo_crop)>();
  sink.add(static_cast<uint32_t>(call(&src, &dst)));
  small.add_to(sink);
  large.add_to(sink);
}

// Blocks of every remainder by 32, and sizes whose block would not fit 32 bits.
template <auto *kAllocate, auto *kFree>
void memory(const Function &, Source &source, Sink &sink) {
  uint32_t size = static_cast<uint32_t>(source.between(0, 5000));
  if (source.one_in(8)) size = UINT32_MAX - size % 36;
  auto *const block = static_cast<uint8_t *>(kAllocate(size));
  sink.add(block != nullptr);
  if (block != nullptr) {
    sink.add(reinterpret_cast<uintptr_t>(block) % 32);
    source.fill(block, size);
    sink.add(block, size);
  }
  kFree(block);
}

#define LOX_MEMORY(tag)                                           \
  LOX_FUNCTION((memory<mlox_malloc_##tag, mlox_mfree_##tag>),     \
               mlox_malloc_##tag),                                \
      LOX_FUNCTION((memory<mlox_malloc_##tag, mlox_mfree_##tag>), \
                   mlox_mfree_##tag)
#define KERNEL(name) LOX_FUNCTION(kernel, name),
const Function kFunctions[] = {
#include "vexo_rot_kernel.inc"
    LOX_FUNCTION(kernel, vexo_cpy_8b),
    LOX_FUNCTION(kernel, vexo_cpy_16b),
    LOX_FUNCTION(kernel, vexo_cpy_24b),
    LOX_FUNCTION(kernel, vexo_cpy_32b),
    LOX_FUNCTION(block_copy, mlox_blk_mcpy),
    LOX_FUNCTION(picture, vexo_cpy),
    LOX_FUNCTION(picture, vexo_rot),
    LOX_FUNCTION(picture, vexo_rot_rows),
    LOX_FUNCTION(window, vexo_crop),
    LOX_FUNCTION(window, vexo_padding),
    LOX_MEMORY(align32),
    LOX_MEMORY(fast_align32),
};

}  // namespace

const Family rot_family = make_family("rot", 100, kFunctions);

}  // namespace lox_test
