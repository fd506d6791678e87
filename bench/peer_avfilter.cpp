// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's transpose filter, on one thread. Its frames are kept until the same
// destination comes again, so that a ring of destinations is a ring of its
// frames too.
#include "bench/filter_graph.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <memory>
#include <string>

#include "bench/contender.h"

namespace bench {

namespace {

AVPixelFormat name_of(int32_t format) {
  switch (format) {
    case VEXO_FMT_NV12:
      return AV_PIX_FMT_NV12;
    case VEXO_FMT_RGBA8888:
      return AV_PIX_FMT_RGBA;
    default:
      return AV_PIX_FMT_NONE;
  }
}

void fetch(const FilterGraph &graph, const vexo_img &dst) {
  const AVFrame *frame = graph.result(dst.plane[0]);
  if (!frame) return;
  av_image_copy(
      const_cast<uint8_t **>(dst.plane), const_cast<int *>(dst.stride),
      const_cast<const uint8_t **>(frame->data), frame->linesize,
      static_cast<AVPixelFormat>(frame->format), frame->width, frame->height);
}

}  // namespace

void add_avfilter(const Workload &workload, const Sizes &sizes,
                  Contenders *out) {
  const AVPixelFormat format = name_of(workload.src_format);
  if (workload.task != Task::kTurn || !workload.is_quarter_turn() ||
      format == AV_PIX_FMT_NONE) {
    return;
  }
  const bool clockwise = workload.rotation == VEXO_ROT_90R;
  const auto transpose = std::make_shared<FilterGraph>(
      format, sizes.src, clockwise ? "transpose=clock" : "transpose=cclock", 1);
  if (!transpose->ok()) return;
  out->push_back({"FFmpeg transpose", Contender::Kind::kPeer,
                  [=](uint8_t *s, uint8_t *d) {
                    transpose->run(describe_src(workload, sizes, s), d);
                  },
                  workload.dst_format, -1,
                  [=](uint8_t *d) {
                    fetch(*transpose, describe_dst(workload, sizes, d));
                  }});
}

std::string avfilter_version_text() {
  const unsigned v = avfilter_version();
  return std::to_string(v >> 16) + "." + std::to_string(v >> 8 & 255) + "." +
         std::to_string(v & 255);
}

}  // namespace bench
