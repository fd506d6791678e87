// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's swscale: at equal sizes with its two fastest settings, else with
// those that weigh samples.
extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <span>
#include <string>

#include "bench/contender.h"

namespace bench {

namespace {

AVPixelFormat name_of(int32_t format) {
  switch (format) {
    case VEXO_FMT_YUV400:
      return AV_PIX_FMT_GRAY8;
    case VEXO_FMT_YUV420:
      return AV_PIX_FMT_YUV420P;
    case VEXO_FMT_NV12:
      return AV_PIX_FMT_NV12;
    case VEXO_FMT_NV21:
      return AV_PIX_FMT_NV21;
    case VEXO_FMT_YUYV:
      return AV_PIX_FMT_YUYV422;
    case VEXO_FMT_RGB565:
      return AV_PIX_FMT_RGB565LE;
    case VEXO_FMT_RGB888:
      return AV_PIX_FMT_RGB24;
    case VEXO_FMT_RGBA8888:
      return AV_PIX_FMT_RGBA;
    default:
      return AV_PIX_FMT_NONE;
  }
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

constexpr Setting kConverting[] = {
    {"swscale POINT", SWS_POINT},
    {"swscale FAST_BILINEAR", SWS_FAST_BILINEAR},
};
constexpr Setting kScaling[] = {
    {"swscale BILINEAR", SWS_BILINEAR},
    {"swscale FAST_BILINEAR", SWS_FAST_BILINEAR},
    {"swscale AREA", SWS_AREA},
};
constexpr Setting kReducing[] = {
    {"swscale LANCZOS", SWS_LANCZOS},
    {"swscale AREA", SWS_AREA},
};

std::span<const Setting> settings_for(Task task) {
  switch (task) {
    case Task::kConvert:
      return kConverting;
    case Task::kScale:
      return kScaling;
    case Task::kReduce:
      return kReducing;
    default:
      return {};
  }
}

}  // namespace

void add_swscale(const Workload &workload, const Sizes &sizes,
                 Contenders *out) {
  const AVPixelFormat from = name_of(workload.src_format);
  const AVPixelFormat to = name_of(workload.dst_format);
  if (from == AV_PIX_FMT_NONE || to == AV_PIX_FMT_NONE || workload.is_copy()) {
    return;
  }
  // It warns about every pair that it has no special form for.
  av_log_set_level(AV_LOG_ERROR);
  for (const Setting &setting : settings_for(workload.task)) {
    const std::shared_ptr<SwsContext> context(
        sws_getContext(sizes.src.width, sizes.src.height, from, sizes.dst.width,
                       sizes.dst.height, to, setting.flags, nullptr, nullptr,
                       nullptr),
        sws_freeContext);
    if (!context || !set_standard(context.get(), workload.color_std)) continue;
    out->push_back({setting.name, Contender::Kind::kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      const vexo_img src = describe_src(workload, sizes, s);
                      const vexo_img dst = describe_dst(workload, sizes, d);
                      sws_scale(context.get(), src.plane, src.stride, 0,
                                src.height[0], dst.plane, dst.stride);
                    },
                    workload.dst_format});
  }
}

std::string swscale_version_text() {
  const unsigned v = swscale_version();
  return std::to_string(v >> 16) + "." + std::to_string(v >> 8 & 255) + "." +
         std::to_string(v & 255);
}

}  // namespace bench
