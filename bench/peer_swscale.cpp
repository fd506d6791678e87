// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's swscale at equal sizes, with its two fastest settings.
extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

#include "bench/contender.h"

namespace bench {

namespace {

AVPixelFormat name_of(int32_t format) {
  switch (format) {
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

}  // namespace

void add_swscale(const Workload &workload, int w, int h, Contenders *out) {
  if (workload.is_copy()) return;
  // It warns about every pair that it has no special form for.
  av_log_set_level(AV_LOG_ERROR);
  constexpr struct {
    const char *name;
    int flags;
  } kSettings[] = {{"swscale POINT", SWS_POINT},
                   {"swscale FAST_BILINEAR", SWS_FAST_BILINEAR}};
  for (const auto &setting : kSettings) {
    const std::shared_ptr<SwsContext> context(
        sws_getContext(w, h, name_of(workload.src_format), w, h,
                       name_of(workload.dst_format), setting.flags, nullptr,
                       nullptr, nullptr),
        sws_freeContext);
    if (!context) continue;
    out->push_back({setting.name, Contender::Kind::kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      const vexo_img src =
                          describe(workload.src_format, w, h, s);
                      const vexo_img dst =
                          describe(workload.dst_format, w, h, d);
                      sws_scale(context.get(), src.plane, src.stride, 0, h,
                                dst.plane, dst.stride);
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
