// SPDX-License-Identifier: Apache-2.0
//
// zimg from PQ to BT.709 without any tone curve, on one thread: it has none,
// and what is above 100 nits is white. It takes and gives planes only, so
// unpacking P010 and packing NV12 or RGBA are left out in its favour.
#include <zimg.h>

#include "bench/frames.h"
#include "bench/hdr_contender.h"
#include "common/isa.h"

namespace bench {

namespace {

struct FreeGraph {
  void operator()(zimg_filter_graph *graph) const {
    zimg_filter_graph_free(graph);
  }
};

zimg_image_format picture(Size size) {
  zimg_image_format format;
  zimg_image_format_default(&format, ZIMG_API_VERSION);
  format.width = static_cast<unsigned>(size.width);
  format.height = static_cast<unsigned>(size.height);
  format.color_family = ZIMG_COLOR_YUV;
  format.subsample_w = 1;
  format.subsample_h = 1;
  format.pixel_range = ZIMG_RANGE_LIMITED;
  return format;
}

zimg_image_format source(Size size) {
  zimg_image_format format = picture(size);
  format.pixel_type = ZIMG_PIXEL_WORD;
  format.depth = 10;
  format.matrix_coefficients = ZIMG_MATRIX_BT2020_NCL;
  format.transfer_characteristics = ZIMG_TRANSFER_ST2084;
  format.color_primaries = ZIMG_PRIMARIES_BT2020;
  return format;
}

zimg_image_format destination(Size size, bool rgb) {
  zimg_image_format format = picture(size);
  format.pixel_type = ZIMG_PIXEL_BYTE;
  format.depth = 8;
  format.matrix_coefficients = ZIMG_MATRIX_BT709;
  format.transfer_characteristics = ZIMG_TRANSFER_BT709;
  format.color_primaries = ZIMG_PRIMARIES_BT709;
  if (rgb) {
    format.color_family = ZIMG_COLOR_RGB;
    format.matrix_coefficients = ZIMG_MATRIX_RGB;
    format.subsample_w = 0;
    format.subsample_h = 0;
  }
  return format;
}

class PlainConversion final : public ToneMapper {
 public:
  PlainConversion(Size size, bool rgb, zimg_cpu_type_e cpu)
      : size_(size), rgb_(rgb) {
    const zimg_image_format from = source(size), to = destination(size, rgb);
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    // Chroma as this library takes it, without weighing neighbours.
    params.resample_filter_uv = ZIMG_RESIZE_POINT;
    params.cpu_type = cpu;
    params.nominal_peak_luminance = 100;
    params.allow_approximate_gamma = 1;
    graph_.reset(zimg_filter_graph_build(&from, &to, &params));
    size_t bytes = 0;
    if (graph_ && zimg_filter_graph_get_tmp_size(graph_.get(), &bytes) ==
                      ZIMG_ERROR_SUCCESS) {
      scratch_ = std::make_unique<Block>(bytes);
    }
  }

  bool ok() const { return scratch_ != nullptr; }

  bool run(const vexo_img &src, uint8_t *dst) override {
    zimg_image_buffer_const from = {};
    zimg_image_buffer to = {};
    from.version = to.version = ZIMG_API_VERSION;
    const Channels out = channels(dst);
    for (size_t p = 0; p < 3; ++p) {
      from.plane[p] = {src.plane[p], src.stride[p], ZIMG_BUFFER_MAX};
      to.plane[p] = {dst + (out[p].first - dst), out[p].stride,
                     ZIMG_BUFFER_MAX};
    }
    return zimg_filter_graph_process(graph_.get(), &from, &to, scratch_->data(),
                                     nullptr, nullptr, nullptr,
                                     nullptr) == ZIMG_ERROR_SUCCESS;
  }

  Channels channels(const uint8_t *dst) const override {
    Channels channels = {};
    for (size_t c = 0; c < 3; ++c) {
      const int half = !rgb_ && c > 0;
      const int32_t w = size_.width >> half, h = size_.height >> half;
      channels[c] = {dst, w, h, w, 1};
      dst += ptrdiff_t{w} * h;
    }
    return channels;
  }

 private:
  Size size_;
  bool rgb_;
  std::unique_ptr<zimg_filter_graph, FreeGraph> graph_;
  std::unique_ptr<Block> scratch_;
};

constexpr struct {
  const char *name;
  zimg_cpu_type_e cpu;
} kForms[] = {
    {"(zimg)", ZIMG_CPU_AUTO},
    {"(zimg 64B)", ZIMG_CPU_AUTO_64B},
};

}  // namespace

void add_zimg_tone_mapping(const ToneMapping &mapping, Size size,
                           HdrContenders *out) {
  if (!mapping.is_main) return;
  const bool rgb = mapping.dst_format == VEXO_FMT_RGBA8888;
  for (const auto &form : kForms) {
    out->push_back({form.name, false, VEXO_FMT_YUV420PLANAR16, false,
                    lox::isa_best(), [=]() -> std::unique_ptr<ToneMapper> {
                      auto graph = std::make_unique<PlainConversion>(size, rgb,
                                                                     form.cpu);
                      if (!graph->ok()) return nullptr;
                      return graph;
                    }});
  }
}

}  // namespace bench
