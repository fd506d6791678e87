// SPDX-License-Identifier: Apache-2.0
// Enhancement: saturation, sharpening, deblocking, stereo frames.
#include <orumlox/unprefixed.h>

#include <algorithm>
#include <type_traits>

#include "cases/cases.h"

namespace lox_test {
namespace {

void add_status(int32_t status, Sink &sink) {
  sink.add(static_cast<uint32_t>(status));
}

void saturation_table(const Function &function, Source &source, Sink &sink) {
  Buffer table(source, 256);
  function.as<decltype(color_sat_lut)>()(
      table.data(), static_cast<int16_t>(source.between(INT16_MIN, INT16_MAX)));
  sink.add(table.data(), table.size());
}
void shared_table(const Function &function, Source &source, Sink &sink) {
  const int32_t strength =
      source.one_in(2) ? source.any() : source.between(-2, 3000);
  add_status(function.as<decltype(vexo_vqe_cs_init)>()(strength), sink);
  sink.add(lut, sizeof(lut));
}
void saturation(const Function &function, Source &source, Sink &sink) {
  const int32_t count = source.width();
  const auto size = static_cast<size_t>(std::max(count, 0));
  Buffer table(source, 256);
  Buffer u(source, size);
  Buffer v(source, size);
  Buffer to(source, source.one_in(2) ? 0 : size);
  function.as<decltype(color_sat)>()(table.data(), count, u.data(), v.data(),
                                     to.size() == 0 ? u.data() : to.data(),
                                     v.data());
  for (const Buffer *b : {&u, &v, &to}) sink.add(b->data(), b->size());
}

// YUV420 planes whose rows have no gaps, or codes that are refused before any
// plane is looked at.
ExactImage dense_planes(int32_t width, int32_t height) {
  ExactImage image = exact_image(VEXO_FMT_YUV420, width, height);
  for (ExactPlane &plane : image) {
    if (plane.row_bytes > 0) plane.whole = plane.bytes(plane.row_bytes);
  }
  return image;
}
template <class Type>
void picture(const Function &function, Source &source, Sink &sink) {
  const int32_t width = source.width();
  const ExactImage image = dense_planes(width, source.height(width));
  Picture src(source);
  Picture dst(source);
  const bool refused = source.one_in(8);
  src.img.format = refused ? source.format() : VEXO_FMT_YUV420;
  dst.img.format = refused ? source.format() : VEXO_FMT_YUV420;
  vexo_img planes = dst.img;  // of no sizes: the source's count
  if (src.img.format == VEXO_FMT_YUV420 && dst.img.format == VEXO_FMT_YUV420) {
    src.set(image);
    dst.set(image);
    std::copy(dst.img.plane, dst.img.plane + 4, planes.plane);
  }
  const int32_t strength = source.between(-3, 20);
  if constexpr (std::is_same_v<Type, decltype(vexo_vqe_cs)>) {
    add_status(function.as<Type>()(&src.img, &planes), sink);
  } else {
    add_status(function.as<Type>()(&src.img, &planes, strength), sink);
  }
  dst.add_to(sink);
}
void sharpen(const Function &function, Source &source, Sink &sink) {
  const int32_t width = source.width();
  const int32_t height = source.height(width);
  Picture src(source);
  Picture dst(source);
  src.set(dense_planes(width, height));
  dst.set(dense_planes(width, height));
  function.as<decltype(detail_enh)>()(src.img.plane[0], width, height,
                                      dst.img.plane[0], source.any());
  dst.add_to(sink);
}
void nothing(const Function &function, Source &, Sink &sink) {
  add_status(function.as<decltype(vexo_vqe_dejagging)>()(), sink);
}

// Rows that lie over each other are filtered in order, too.
ExactPlane deblocked(Source &source, int32_t *stride) {
  const int32_t width = source.width();
  const ExactPlane plane = exact_plane(width, source.height(width), 1);
  *stride = source.one_in(8) ? source.between(-80, 80)
                             : std::max(plane.width, 0) + source.between(0, 40);
  return plane;
}
int32_t strength(Source &source) {
  return source.one_in(8) ? source.any() : source.between(-1, 18);
}
void deblock_plane(const Function &function, Source &source, Sink &sink) {
  int32_t stride = 0;
  const ExactPlane plane = deblocked(source, &stride);
  Buffer memory(source, static_cast<size_t>(plane.bytes(stride)));
  function.as<decltype(vexo_dbf8x8)>()(memory.data() + plane.first(stride),
                                       strength(source), stride, plane.width,
                                       plane.height);
  sink.add(memory.data(), memory.size());
}
void deblock_picture(const Function &function, Source &source, Sink &sink) {
  Picture picture(source);
  picture.img.format = source.any();
  for (int p = 0; p < 3; ++p) {
    if (source.one_in(8)) continue;
    const ExactPlane plane = deblocked(source, &picture.img.stride[p]);
    picture.set_plane(p, plane, plane.bytes(picture.img.stride[p]));
  }
  const auto by = static_cast<uint32_t>(strength(source));
  add_status(function.as<decltype(vexo_dbf8x8_yuv)>()(&picture.img, by), sink);
  picture.add_to(sink);
}

void stereo_rows(const Function &function, Source &source, Sink &sink) {
  const int32_t bytes = source.width();
  const int32_t rows = source.height(bytes);
  Picture src(source);
  Picture dst(source);
  // Whole pixels are read. The views have one pitch.
  const ExactPlane view = exact_plane(bytes / 3, rows, 3);
  src.draw_strides({view, view}, Rows::kEitherWay);
  src.img.stride[1] = src.img.stride[0];
  src.set_plane(0, view, view.bytes(src.img.stride[0]));
  src.set_plane(1, view, view.bytes(src.img.stride[0]));
  dst.set({exact_plane(bytes, rows, 1)}, Rows::kEitherWay);
  function.as<decltype(vexo_fpa_frm_pack)>()(
      src.img.plane[0], src.img.plane[1], dst.img.plane[0], rows, bytes,
      src.img.stride[0], dst.img.stride[0]);
  dst.add_to(sink);
}
void stereo(const Function &function, Source &source, Sink &sink) {
  const int32_t width = source.width();
  const int32_t height = source.height();
  Picture src(source);
  Picture dst(source);
  src.set({exact_plane(2 * width, height, 3)});
  dst.set({exact_plane(width, height, 3)});
  src.img.format = dst.img.format = VEXO_FMT_RGB888;
  // Mostly without gaps between rows.
  if (!source.one_in(8)) {
    src.img.stride[0] = 6 * width;
    dst.img.stride[0] = 3 * width;
  }
  if (source.one_in(16)) dst.img.format = source.format();
  if (source.one_in(16)) dst.img.width[0] = source.width();
  if (source.one_in(16)) dst.img.height[0] = source.height();
  add_status(function.as<decltype(vexo_fpa)>()(&src.img, &dst.img,
                                               source.between(0, 3)),
             sink);
  dst.add_to(sink);
}

const Function kFunctions[] = {
    LOX_FUNCTION(saturation_table, color_sat_lut),
    LOX_FUNCTION(shared_table, vexo_vqe_cs_init),
    LOX_FUNCTION(saturation, color_sat),
    LOX_FUNCTION(picture<decltype(vexo_vqe_cs)>, vexo_vqe_cs),
    LOX_FUNCTION(picture<decltype(vexo_vqe_de)>, vexo_vqe_de),
    LOX_FUNCTION(sharpen, detail_enh),
    LOX_FUNCTION(nothing, vexo_vqe_dejagging),
    LOX_FUNCTION(deblock_plane, vexo_dbf8x8_h263_hor),
    LOX_FUNCTION(deblock_plane, vexo_dbf8x8_h263_ver),
    LOX_FUNCTION(deblock_plane, vexo_dbf8x8),
    LOX_FUNCTION(deblock_picture, vexo_dbf8x8_yuv),
    LOX_FUNCTION(stereo_rows, vexo_fpa_frm_pack),
    LOX_FUNCTION(stereo, vexo_fpa),
};

}  // namespace

const Family vqe_family = make_family("vqe", 200, kFunctions);

}  // namespace lox_test
