// SPDX-License-Identifier: Apache-2.0
//
// zimg: bilinear scaling of a plane; Lanczos of three lobes for reductions,
// both of which widen to reduce; and PQ to BT.709 without any tone curve, for
// it has none and what is above 100 nits is white. It takes and gives planes
// only, so taking pairs and pixels apart and putting them together are left out
// in its favour. It stays with 32-byte registers unless allowed others.
#include <zimg.h>

#include <cstdlib>

#include "contender.h"

namespace bench {
namespace {

zimg_image_format picture(int32_t format, Size size) {
  zimg_image_format f;
  zimg_image_format_default(&f, ZIMG_API_VERSION);
  f.width = static_cast<unsigned>(size.width);
  f.height = static_cast<unsigned>(size.height);
  f.pixel_type = ZIMG_PIXEL_BYTE;
  f.depth = 8;
  if (format == VEXO_FMT_YUV420PLANAR16) {
    f.pixel_type = ZIMG_PIXEL_WORD;
    f.depth = 10;
  }
  f.pixel_range = ZIMG_RANGE_FULL;
  if (format == VEXO_FMT_YUV400) return f;
  // What YUV444 stands for are planes of R, G and B.
  f.color_family = ZIMG_COLOR_RGB;
  f.matrix_coefficients = ZIMG_MATRIX_RGB;
  if (format == VEXO_FMT_YUV444) return f;
  f.color_family = ZIMG_COLOR_YUV;
  f.matrix_coefficients = ZIMG_MATRIX_BT709;
  f.pixel_range = ZIMG_RANGE_LIMITED;
  f.subsample_w = f.subsample_h = 1;
  // Sample positions of chroma as all others take them.
  f.chroma_location = ZIMG_CHROMA_CENTER;
  return f;
}

void set_hdr(zimg_image_format *src, zimg_image_format *dst) {
  src->pixel_type = ZIMG_PIXEL_WORD;
  src->depth = 10;
  src->matrix_coefficients = ZIMG_MATRIX_BT2020_NCL;
  src->transfer_characteristics = ZIMG_TRANSFER_ST2084;
  src->color_primaries = ZIMG_PRIMARIES_BT2020;
  dst->transfer_characteristics = ZIMG_TRANSFER_BT709;
  dst->color_primaries = ZIMG_PRIMARIES_BT709;
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

// The planar twin of a format.
int32_t planes_of(int32_t format) {
  if (format == VEXO_FMT_YUV400 || format == kI010) return format;
  if (format == VEXO_FMT_P010LE) return VEXO_FMT_YUV420PLANAR16;
  return format >= VEXO_FMT_RGB888 ? VEXO_FMT_YUV444 : VEXO_FMT_YUV420;
}

// What it may use.
std::vector<zimg_cpu_type_e> cpus = {ZIMG_CPU_AUTO, ZIMG_CPU_AUTO_64B};

void hold_zimg(int level) {
#if defined(__x86_64__)
  constexpr zimg_cpu_type_e kCpus[] = {ZIMG_CPU_NONE, ZIMG_CPU_X86_SSE41,
                                       ZIMG_CPU_X86_AVX2};
  cpus = {kCpus[level]};
#else
  cpus = {ZIMG_CPU_NONE};
#endif
}

Run make(const Job &job, zimg_cpu_type_e cpu) {
  const int32_t src_format = planes_of(job.src_format);
  const int32_t dst_format = planes_of(job.dst_format);
  zimg_image_format from = picture(src_format, job.sizes.src);
  zimg_image_format to = picture(dst_format, job.sizes.dst);
  zimg_graph_builder_params params;
  zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
  params.cpu_type = cpu;
  if (job.task == kToneMap) {
    set_hdr(&from, &to);
    // Chroma as this library takes it, without weighing neighbours.
    params.resample_filter_uv = ZIMG_RESIZE_POINT;
    params.nominal_peak_luminance = 100;
    params.allow_approximate_gamma = 1;
  } else if (job.task == kReduce || job.task == kFilter) {
    params.resample_filter = params.resample_filter_uv = ZIMG_RESIZE_LANCZOS;
    params.filter_param_a = params.filter_param_a_uv = 3;
    if (job.task == kFilter && from.subsample_w > 0) {
      from.chroma_location = to.chroma_location = ZIMG_CHROMA_LEFT;
    }
  } else {
    params.resample_filter = ZIMG_RESIZE_BILINEAR;
  }
  const std::shared_ptr<zimg_filter_graph> graph(
      zimg_filter_graph_build(&from, &to, &params), zimg_filter_graph_free);
  size_t bytes = 0;
  if (!graph || zimg_filter_graph_get_tmp_size(graph.get(), &bytes) !=
                    ZIMG_ERROR_SUCCESS) {
    std::abort();
  }
  const auto scratch = std::make_shared<Block>(bytes);
  return [=](uint8_t *s, uint8_t *d) {
    const auto src = buffer<zimg_image_buffer_const>(job.src(s, src_format));
    const auto dst = buffer<zimg_image_buffer>(job.dst(d, dst_format));
    if (zimg_filter_graph_process(graph.get(), &src, &dst, scratch->data(),
                                  nullptr, nullptr, nullptr,
                                  nullptr) != ZIMG_ERROR_SUCCESS) {
      std::abort();
    }
  };
}

void add_zimg(const Job &job, Contenders *out) {
  const bool maps = is_usual_tone_mapping(job);
  const bool scales =
      job.task == kScale && (job.src_format == kI010 ||
                             (scales_plainly(job) && job.src_format == kGrey));
  const bool reduces =
      job.task == kFilter || (job.task == kReduce && !job.is_means());
  if (!maps && !scales && !reduces) return;
  const std::string name = reduces ? "zimg LANCZOS" : "zimg";
  // Of tone mapping, what is clipped goes another way than what is mapped.
  const bool rgb = job.dst_format == VEXO_FMT_RGBA8888;
  const double tolerance = !maps ? near(job) : rgb ? 0.15 : 0.6;
  for (const auto cpu : cpus) {
    out->push_back({cpu == ZIMG_CPU_AUTO_64B ? name + " 64B" : name, tolerance,
                    [=](bool) { return make(job, cpu); },
                    planes_of(job.src_format), planes_of(job.dst_format)});
  }
}

std::string version() {
  unsigned v[3] = {};
  zimg_get_version_info(&v[0], &v[1], &v[2]);
  return std::to_string(v[0]) + "." + std::to_string(v[1]) + "." +
         std::to_string(v[2]);
}

const bool kRegistered = registered({"zimg", version(), add_zimg, hold_zimg});

}  // namespace
}  // namespace bench
