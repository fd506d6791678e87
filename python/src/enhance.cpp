// SPDX-License-Identifier: Apache-2.0
//
// The calls that make better pictures of decoded ones.
#include <orumlox/common.h>
#include <orumlox/unprefixed.h>
#include <orumlox/vqe.h>

#include <memory>

#include "arguments.h"

namespace orumlox_python {

namespace {

void copy_plane(const vexo_img &src, const vexo_img &dst, int32_t p) {
  mlox_blk_mcpy(dst.plane[p], src.plane[p], dst.stride[p], src.stride[p],
                src.width[p] * vexo_format_sample_bytes(src.format, p),
                src.height[p]);
}

// The picture to write to; of one that is made the object, too.
Picture &like(const char *name, const Picture &source, const py::object &out,
              Argument *to, py::object *result) {
  const vexo_img &src = source.img;
  *result = out;
  if (out.is_none()) {
    Picture picture(src.format, src.width[0], src.height[0]);
    picture.img.color_std = src.color_std;
    *result = py::cast(std::move(picture));
  }
  Picture &picture = to->destination(*result, src.format);
  const vexo_img &dst = picture.img;
  if (dst.format != src.format || dst.width[0] != src.width[0] ||
      dst.height[0] != src.height[0]) {
    throw py::value_error(std::string(name) + ": out is " + picture.describe() +
                          ", the source " + source.describe());
  }
  return picture;
}

py::object sharpen(const py::object &source, const py::object &out) {
  Argument from, to;
  const Picture &picture = from.source(source);
  const vexo_img src = picture.img;
  if (src.format > VEXO_FMT_YUV422W) {
    check(VEXO_ERR_UNSUPPORTED,
          "sharpen of " + picture.describe() + ", which has no plane of luma");
  }
  py::object object;
  const Picture &result = like("sharpen", picture, out, &to, &object);
  const vexo_img dst = result.img;
  check_pair("sharpen", src, result);
  const int32_t width = src.width[0];
  const int32_t height = src.height[0];
  const size_t size = static_cast<size_t>(width) * static_cast<size_t>(height);
  const auto dense = [&](const vexo_img &img) {
    return img.stride[0] == width
               ? nullptr
               : std::make_unique_for_overwrite<uint8_t[]>(size);
  };
  const auto luma = dense(src);
  const auto sharp = dense(dst);
  const WithoutGil without;
  if (luma) {
    mlox_blk_mcpy(luma.get(), src.plane[0], width, src.stride[0], width,
                  height);
  }
  // The strength has no effect.
  detail_enh(luma ? luma.get() : src.plane[0], width, height,
             sharp ? sharp.get() : dst.plane[0], 0);
  if (sharp) {
    mlox_blk_mcpy(dst.plane[0], sharp.get(), dst.stride[0], width, width,
                  height);
  }
  for (int32_t p = 1; p < vexo_format_planes(src.format); ++p) {
    copy_plane(src, dst, p);
  }
  return object;
}

py::object deblock(const py::object &source, uint32_t strength,
                   const py::object &out) {
  Argument from, to;
  const Picture &picture = from.source(source);
  const vexo_img src = picture.img;
  const int32_t planes = vexo_format_planes(src.format);
  if (src.format > VEXO_FMT_YUV422W || planes == 2) {
    check(VEXO_ERR_UNSUPPORTED, "deblock of " + picture.describe() +
                                    ", which has samples in pairs or pixels");
  }
  if (strength > 15) throw py::value_error("deblock: strength is 0 to 15");
  py::object object;
  const Picture &result = like("deblock", picture, out, &to, &object);
  const vexo_img dst = result.img;
  const bool in_place = &result == &picture;
  if (!in_place) {
    check_pair("deblock", src, result);
  } else if (result.read_only) {
    throw py::value_error("deblock: out is read-only");
  }
  const WithoutGil without;
  for (int32_t p = 0; p < planes && !in_place; ++p) copy_plane(src, dst, p);
  vexo_dbf8x8_yuv(&dst, strength);
  return object;
}

}  // namespace

void define_enhancement(py::module_ &module) {
  module.def("sharpen", &sharpen,
             "sharpen(source, *, out=None)\n--\n\nLuma sharpened.",
             py::arg("source"), py::kw_only(), py::arg("out") = py::none());
  module.def("deblock", &deblock,
             "deblock(source, strength, *, out=None)\n--\n\n"
             "The edges of 8 x 8 blocks smoothed in all planes, by 0 to 15. "
             "out may be the source.",
             py::arg("source"), py::arg("strength"), py::kw_only(),
             py::arg("out") = py::none());
}

}  // namespace orumlox_python
