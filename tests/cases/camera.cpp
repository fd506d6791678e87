// SPDX-License-Identifier: Apache-2.0
// Camera frames whose planes lie in every way, in buffers that end with the
// last sample that is wanted.
#include <orumlox/camera.h>

#include <algorithm>

#include "cases/cases.h"
#include "cases/picture.h"

namespace lox_test {
namespace {

struct Planes {
  vexo_camera_frame frame = {};
  Buffer memory[3];
};

// How U and V lie: each by itself, or in turn in one buffer.
enum Lie { kApart, kUFirst, kVFirst };

void draw_planes(Source &source, const vexo_camera_options &o, Planes *planes) {
  vexo_camera_frame &frame = planes->frame;
  const int32_t lie = source.between(kApart, kVFirst);
  for (int p = 0; p < 3; ++p) {
    const int shift = p == 0 ? 0 : 1;
    const bool in_turn = p > 0 && lie != kApart;
    const int32_t step = in_turn ? 2 : source.one_in(p == 0 ? 8 : 2) ? 2 : 1;
    const int32_t columns = (frame.width + shift) >> shift;
    int32_t stride =
        columns * step + source.between(0, 1) * source.between(0, 40);
    if (source.large()) stride = (stride + 63) / 64 * 64;
    // The last row may be shorter than the stride by all that is no sample.
    if (!in_turn && stride == columns * step) stride -= step - 1;
    if (p == 2 && lie != kApart) stride = frame.row_stride[1];
    frame.row_stride[p] = stride;
    frame.pixel_stride[p] = step;
    const int64_t x = (o.crop_x + o.crop_width - 1) >> shift;
    const int64_t y = (o.crop_y + o.crop_height - 1) >> shift;
    frame.bytes[p] = static_cast<size_t>(y * stride + x * step + 1);
    if (p < 2 || lie == kApart) {
      planes->memory[p].reset(source, frame.bytes[p] + (in_turn ? 1 : 0));
      frame.plane[p] = planes->memory[p].data();
    } else {
      frame.plane[p] = frame.plane[1];
      ++frame.plane[lie == kUFirst ? 2 : 1];
    }
  }
}

// Something that is refused.
void spoil(Source &source, vexo_camera_frame *frame, vexo_camera_options *o,
           vexo_img *dst) {
  const int p = source.between(0, 2);
  const int32_t kind = source.between(0, 15);
  const int32_t less = source.between(-2, -1);
  switch (kind) {
    case 0:
      frame->plane[p] = nullptr;
      return;
    case 1:
      --frame->bytes[p];
      return;
    case 2:
      frame->pixel_stride[p] += source.one_in(2) ? 2 : -2;
      return;
    case 3:
      frame->row_stride[p] =
          (frame->width - 1) / (p == 0 ? 1 : 2) * frame->pixel_stride[p];
      return;
    case 4:
      frame->color_std = source.between(-1, 12);
      return;
    case 5:
      frame->reserved[4] = 1;
      return;
    case 6:
      (source.one_in(2) ? frame->width : frame->height) = source.between(-1, 0);
      return;
    case 7:
      (source.one_in(2) ? o->crop_x : o->crop_y) = less;
      return;
    case 8:
      (source.one_in(2) ? o->crop_width : o->crop_height) = less;
      return;
    case 9:
      (source.one_in(2) ? o->crop_x : o->crop_y) = INT32_MAX;
      return;
    case 10:
      o->rotation += source.one_in(2) ? 1 : 360;
      return;
    case 11:
      o->mirror = source.one_in(2) ? 2 : -1;
      return;
    case 12:
      o->reserved[9] = 1;
      return;
    case 13:
      (source.one_in(2) ? dst->width : dst->height)[0] +=
          source.one_in(2) ? 1 : -1;
      return;
    case 14:
      dst->stride[0] =
          (dst->width[0] * (dst->format == VEXO_FMT_RGB565 ? 2 : 4) - 1) *
          (source.one_in(2) ? 1 : -1);
      return;
    default:
      (source.one_in(2) ? dst->format : dst->color_std) = VEXO_FMT_RGB888;
  }
}

void to_rgb(const Function &function, Source &source, Sink &sink) {
  Planes planes;
  vexo_camera_frame &frame = planes.frame;
  frame.width = std::max(source.width(), 1);
  frame.height = std::max(source.height(), 1);
  if (source.one_in(16) && !source.large()) {
    // Turned in several parts.
    frame.width = source.between(1, 40);
    frame.height = source.between(64, 1400);
  }
  frame.color_std = source.one_of(kPictureStandards);
  vexo_camera_options o = {};
  o.rotation = 90 * source.between(0, 3);
  o.mirror = source.between(0, 1);
  o.crop_width = frame.width;
  o.crop_height = frame.height;
  if (source.one_in(2)) {
    o.crop_x = source.between(0, std::min(frame.width - 1, 20));
    o.crop_y = source.between(0, std::min(frame.height - 1, 20));
    o.crop_width = frame.width - o.crop_x;
    o.crop_height = frame.height - o.crop_y;
    if (!source.large()) o.crop_width = source.between(1, o.crop_width);
    if (!source.large()) o.crop_height = source.between(1, o.crop_height);
  }
  draw_planes(source, o, &planes);
  const ExactImage image =
      exact_image(source.one_in(2) ? VEXO_FMT_RGBA8888 : VEXO_FMT_RGB565,
                  o.crop_width, o.crop_height);
  Picture dst(source);
  dst.set(o.rotation % 180 == 0 ? image : turned(image), Rows::kEitherWay);
  dst.img.format = image[0].row_bytes == 2 * int64_t{o.crop_width}
                       ? VEXO_FMT_RGB565
                       : VEXO_FMT_RGBA8888;
  dst.img.color_std = source.one_in(2) ? frame.color_std : 0;
  // A size of nothing reaches to the edge, options of nothing are none.
  if (o.crop_x + o.crop_width == frame.width && source.one_in(2)) {
    o.crop_width = 0;
  }
  if (o.crop_y + o.crop_height == frame.height) o.crop_height = 0;
  const bool none = o.rotation + o.mirror + o.crop_x + o.crop_y + o.crop_width +
                        o.crop_height ==
                    0;
  if (source.one_in(4)) spoil(source, &frame, &o, &dst.img);
  sink.add(static_cast<uint32_t>(function.as<decltype(vexo_camera_to_rgb)>()(
      &frame, none ? nullptr : &o, &dst.img)));
  dst.add_to(sink);
}

const Function kFunctions[] = {LOX_FUNCTION(to_rgb, vexo_camera_to_rgb)};

}  // namespace

const Family camera_family = make_family("camera", 200, kFunctions);

}  // namespace lox_test
