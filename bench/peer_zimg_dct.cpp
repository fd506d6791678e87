// SPDX-License-Identifier: Apache-2.0
//
// zimg's Lanczos filter of three lobes, which it widens to reduce. It takes and
// gives planes only, so taking pairs and pixels apart and putting them together
// are left out in its favour: I420 where NV12 is asked for, planes of R, G and
// B for RGBA8888.
#include <zimg.h>

#include <memory>

#include "bench/contender.h"
#include "bench/frames.h"

namespace bench {

namespace {

constexpr struct {
  const char *name;
  zimg_cpu_type_e cpu;
} kForms[] = {
    {"zimg LANCZOS", ZIMG_CPU_AUTO},
    {"zimg LANCZOS 64B", ZIMG_CPU_AUTO_64B},
};

zimg_image_format picture(int32_t format, Size size) {
  const bool rgb = format == VEXO_FMT_YUV444;
  zimg_image_format f;
  zimg_image_format_default(&f, ZIMG_API_VERSION);
  f.width = static_cast<unsigned>(size.width);
  f.height = static_cast<unsigned>(size.height);
  f.pixel_type = ZIMG_PIXEL_BYTE;
  f.color_family = rgb ? ZIMG_COLOR_RGB : ZIMG_COLOR_YUV;
  f.pixel_range = rgb ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
  f.subsample_w = f.subsample_h = rgb ? 0 : 1;
  // Sample positions of chroma as all others take them.
  f.chroma_location = ZIMG_CHROMA_CENTER;
  if (rgb) f.matrix_coefficients = ZIMG_MATRIX_RGB;
  return f;
}

template <typename Buffer>
Buffer buffer(const vexo_img &img) {
  Buffer b = {};
  b.version = ZIMG_API_VERSION;
  for (int p = 0; p < 3; ++p) {
    b.plane[p].data = img.plane[p];
    b.plane[p].stride = img.stride[p];
    b.plane[p].mask = ZIMG_BUFFER_MAX;
  }
  return b;
}

}  // namespace

void add_zimg_reduction(const Workload &workload, const Sizes &sizes,
                        Contenders *out) {
  if (workload.task != Task::kReduce) return;
  Workload planes = workload;
  planes.src_format = planes.dst_format =
      workload.src_format == VEXO_FMT_RGBA8888 ? VEXO_FMT_YUV444
                                               : VEXO_FMT_YUV420;
  for (const auto &form : kForms) {
    const zimg_image_format from = picture(planes.src_format, sizes.src);
    const zimg_image_format to = picture(planes.dst_format, sizes.dst);
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.resample_filter = params.resample_filter_uv = ZIMG_RESIZE_LANCZOS;
    params.filter_param_a = params.filter_param_a_uv = 3;
    params.cpu_type = form.cpu;
    const std::shared_ptr<zimg_filter_graph> graph(
        zimg_filter_graph_build(&from, &to, &params), zimg_filter_graph_free);
    size_t bytes = 0;
    if (!graph || zimg_filter_graph_get_tmp_size(graph.get(), &bytes) !=
                      ZIMG_ERROR_SUCCESS) {
      continue;
    }
    const auto scratch = std::make_shared<Block>(bytes);
    out->push_back(
        {form.name, Contender::Kind::kPeer,
         [=](uint8_t *s, uint8_t *d) {
           const auto src =
               buffer<zimg_image_buffer_const>(describe_src(planes, sizes, s));
           const auto dst =
               buffer<zimg_image_buffer>(describe_dst(planes, sizes, d));
           zimg_filter_graph_process(graph.get(), &src, &dst, scratch->data(),
                                     nullptr, nullptr, nullptr, nullptr);
         },
         planes.dst_format, -1, nullptr, planes.src_format});
  }
}

}  // namespace bench
