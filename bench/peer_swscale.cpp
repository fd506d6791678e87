// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's swscale: at equal sizes with its two fastest settings, else with
// those that weigh samples as this library does or widen their filters.
extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <utility>

#include "contender.h"

namespace bench {

namespace {

AVPixelFormat name_of(int32_t format) {
  constexpr std::pair<int32_t, AVPixelFormat> kNames[] = {
      {VEXO_FMT_YUV400, AV_PIX_FMT_GRAY8},
      {VEXO_FMT_YUV420, AV_PIX_FMT_YUV420P},
      {VEXO_FMT_NV12, AV_PIX_FMT_NV12},
      {VEXO_FMT_NV21, AV_PIX_FMT_NV21},
      {VEXO_FMT_YUYV, AV_PIX_FMT_YUYV422},
      {VEXO_FMT_RGB565, AV_PIX_FMT_RGB565LE},
      {VEXO_FMT_RGB888, AV_PIX_FMT_RGB24},
      {VEXO_FMT_RGBA8888, AV_PIX_FMT_RGBA}};
  for (const auto &[format_, name] : kNames) {
    if (format_ == format) return name;
  }
  return AV_PIX_FMT_NONE;
}

// Its own default is the library's.
bool set_standard(SwsContext *context, int32_t color_std) {
  if (color_std == VEXO_STD_DEFAULT) return true;
  const int *const matrix = sws_getCoefficients(
      color_std == VEXO_STD_BT709 ? SWS_CS_ITU709 : SWS_CS_ITU601);
  const int src_range = color_std == VEXO_STD_BT601_FULL;
  // Neutral brightness, contrast and saturation.
  return sws_setColorspaceDetails(context, matrix, src_range, matrix, 0, 0,
                                  1 << 16, 1 << 16) >= 0;
}

struct Setting {
  const char *name;
  int flags;
};

std::vector<Setting> settings_for(const Job &job) {
  switch (job.task) {
    case kConvert:
      return {{"swscale POINT", SWS_POINT},
              {"swscale FAST_BILINEAR", SWS_FAST_BILINEAR}};
    case kScale:
      if (!scales_plainly(job)) return {};
      return {{"swscale BILINEAR", SWS_BILINEAR},
              {"swscale FAST_BILINEAR", SWS_FAST_BILINEAR},
              {"swscale AREA", SWS_AREA}};
    case kReduce:
      if (job.is_means()) return {{"swscale AREA", SWS_AREA}};
      return {{"swscale LANCZOS", SWS_LANCZOS}};
    default:
      return {};
  }
}

void add_swscale(const Job &job, Contenders *out) {
  const AVPixelFormat from = name_of(job.src_format);
  const AVPixelFormat to = name_of(job.dst_format);
  const bool converts = job.task == kConvert;
  if (from == AV_PIX_FMT_NONE || to == AV_PIX_FMT_NONE ||
      (converts && from == to)) {
    return;
  }
  // It warns about every pair that it has no special form for.
  av_log_set_level(AV_LOG_ERROR);
  for (const Setting &setting : settings_for(job)) {
    const std::shared_ptr<SwsContext> context(
        sws_getContext(job.sizes.src.width, job.sizes.src.height, from,
                       job.sizes.dst.width, job.sizes.dst.height, to,
                       setting.flags, nullptr, nullptr, nullptr),
        sws_freeContext);
    if (!context || (converts && !set_standard(context.get(), job.option))) {
      continue;
    }
    const auto work = [=](const vexo_img &src, const vexo_img &dst) {
      sws_scale(context.get(), src.plane, src.stride, 0, src.height[0],
                dst.plane, dst.stride);
    };
    add_frames(out, job, setting.name, work, near(job));
  }
}

const bool kRegistered =
    registered("swscale", AV_STRINGIFY(LIBSWSCALE_VERSION), add_swscale);

}  // namespace

}  // namespace bench
