// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's transpose filter, on one thread. It reads the frame in place and
// writes one of its own pool. That frame is kept until the same destination
// comes again, so that a ring of destinations is a ring of its frames too.

// Before FFmpeg's headers, which want its macros.
#include <cstdint>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
}

#include <map>
#include <memory>
#include <string>

#include "bench/contender.h"

namespace bench {

namespace {

struct FreeFrame {
  void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

struct FreeGraph {
  void operator()(AVFilterGraph *graph) const { avfilter_graph_free(&graph); }
};

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

class Transpose {
 public:
  // Check ok() before use.
  Transpose(AVPixelFormat format, Size size, bool clockwise)
      : graph_(avfilter_graph_alloc()), format_(format), size_(size) {
    graph_->nb_threads = 1;
    const std::string source = "video_size=" + std::to_string(size.width) +
                               "x" + std::to_string(size.height) +
                               ":pix_fmt=" + std::to_string(format) +
                               ":time_base=1/25";
    AVFilterContext *filter = nullptr;
    const auto make = [&](AVFilterContext **context, const char *name,
                          const char *arguments) {
      return avfilter_graph_create_filter(context, avfilter_get_by_name(name),
                                          name, arguments, nullptr,
                                          graph_.get()) >= 0;
    };
    ok_ = make(&source_, "buffer", source.c_str()) &&
          make(&filter, "transpose", clockwise ? "dir=clock" : "dir=cclock") &&
          make(&sink_, "buffersink", nullptr) &&
          avfilter_link(source_, 0, filter, 0) == 0 &&
          avfilter_link(filter, 0, sink_, 0) == 0 &&
          avfilter_graph_config(graph_.get(), nullptr) >= 0;
  }

  bool ok() const { return ok_; }

  void run(const vexo_img &src, uint8_t *dst) {
    Frame &out = out_[dst];
    out.reset();
    const Frame in(av_frame_alloc());
    in->format = format_;
    in->width = size_.width;
    in->height = size_.height;
    for (int p = 0; p < 2 && src.plane[p]; ++p) {
      in->data[p] = src.plane[p];
      in->linesize[p] = src.stride[p];
    }
    // Without a counted reference the filter would copy the frame.
    in->buf[0] = av_buffer_create(
        src.plane[0], frame_bytes(src), [](void *, uint8_t *) {}, nullptr,
        AV_BUFFER_FLAG_READONLY);
    Frame result(av_frame_alloc());
    if (av_buffersrc_add_frame(source_, in.get()) >= 0 &&
        av_buffersink_get_frame(sink_, result.get()) >= 0) {
      out = std::move(result);
    }
  }

  void fetch(const vexo_img &dst) const {
    const auto found = out_.find(dst.plane[0]);
    if (found == out_.end() || !found->second) return;
    const AVFrame &frame = *found->second;
    av_image_copy(const_cast<uint8_t **>(dst.plane),
                  const_cast<int *>(dst.stride),
                  const_cast<const uint8_t **>(frame.data), frame.linesize,
                  format_, frame.width, frame.height);
  }

 private:
  std::unique_ptr<AVFilterGraph, FreeGraph> graph_;
  AVPixelFormat format_;
  Size size_;
  AVFilterContext *source_ = nullptr, *sink_ = nullptr;
  bool ok_ = false;
  std::map<uint8_t *, Frame> out_;
};

}  // namespace

void add_avfilter(const Workload &workload, const Sizes &sizes,
                  Contenders *out) {
  const AVPixelFormat format = name_of(workload.src_format);
  if (workload.task != Task::kTurn || !workload.is_quarter_turn() ||
      format == AV_PIX_FMT_NONE) {
    return;
  }
  av_log_set_level(AV_LOG_ERROR);
  const auto transpose = std::make_shared<Transpose>(
      format, sizes.src, workload.rotation == VEXO_ROT_90R);
  if (!transpose->ok()) return;
  out->push_back({"FFmpeg transpose", Contender::Kind::kPeer,
                  [=](uint8_t *s, uint8_t *d) {
                    transpose->run(describe_src(workload, sizes, s), d);
                  },
                  workload.dst_format, -1,
                  [=](uint8_t *d) {
                    transpose->fetch(describe_dst(workload, sizes, d));
                  }});
}

std::string avfilter_version_text() {
  const unsigned v = avfilter_version();
  return std::to_string(v >> 16) + "." + std::to_string(v >> 8 & 255) + "." +
         std::to_string(v & 255);
}

}  // namespace bench
