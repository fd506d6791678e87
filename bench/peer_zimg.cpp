// SPDX-License-Identifier: Apache-2.0
//
// zimg's bilinear scaling of one plane, which widens its filter to reduce. It
// takes planar pictures only, and stays with 32-byte registers unless allowed
// others.
#include <zimg.h>

#include <memory>
#include <string>

#include "bench/contender.h"
#include "bench/frames.h"

namespace bench {

namespace {

constexpr struct {
  const char *name;
  zimg_cpu_type_e cpu;
} kForms[] = {
    {"zimg", ZIMG_CPU_AUTO},
    {"zimg 64B", ZIMG_CPU_AUTO_64B},
};

zimg_image_format grey(Size size) {
  zimg_image_format format;
  zimg_image_format_default(&format, ZIMG_API_VERSION);
  format.width = static_cast<unsigned>(size.width);
  format.height = static_cast<unsigned>(size.height);
  format.pixel_type = ZIMG_PIXEL_BYTE;
  format.pixel_range = ZIMG_RANGE_FULL;
  return format;
}

template <typename Buffer>
Buffer buffer(const vexo_img &img) {
  Buffer b = {};
  b.version = ZIMG_API_VERSION;
  b.plane[0].data = img.plane[0];
  b.plane[0].stride = img.stride[0];
  b.plane[0].mask = ZIMG_BUFFER_MAX;
  return b;
}

}  // namespace

void add_zimg(const Workload &workload, const Sizes &sizes, Contenders *out) {
  if (workload.task != Task::kScale || workload.src_format != VEXO_FMT_YUV400) {
    return;
  }
  for (const auto &form : kForms) {
    const zimg_image_format from = grey(sizes.src), to = grey(sizes.dst);
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.resample_filter = ZIMG_RESIZE_BILINEAR;
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
           const auto src = buffer<zimg_image_buffer_const>(
               describe_src(workload, sizes, s));
           const auto dst =
               buffer<zimg_image_buffer>(describe_dst(workload, sizes, d));
           zimg_filter_graph_process(graph.get(), &src, &dst, scratch->data(),
                                     nullptr, nullptr, nullptr, nullptr);
         },
         workload.dst_format});
  }
}

std::string zimg_version() {
  unsigned major = 0, minor = 0, micro = 0;
  zimg_get_version_info(&major, &minor, &micro);
  return std::to_string(major) + "." + std::to_string(minor) + "." +
         std::to_string(micro);
}

}  // namespace bench
