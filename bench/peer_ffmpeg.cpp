// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's filters: quarter turns, deblocking, and its usual chain for tone
// mapping. A graph of them reads a frame in place and writes one of its own
// pool.
#include <cstdint>  // before FFmpeg's headers, which want its macros

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
}

#include <cstdlib>
#include <map>

#include "contender.h"

namespace bench {

namespace {

constexpr char kToneMapping[] =
    "zscale=t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,"
    "tonemap=tonemap=hable:desat=0,zscale=t=bt709:m=bt709:r=tv,format=";

struct FreeFrame {
  void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

AVPixelFormat name_of(int32_t format) {
  switch (format) {
    case VEXO_FMT_NV12:
      return AV_PIX_FMT_NV12;
    case VEXO_FMT_RGBA8888:
      return AV_PIX_FMT_RGBA;
    case VEXO_FMT_YUV420PLANAR16:
      return AV_PIX_FMT_YUV420P10LE;
    default:
      return AV_PIX_FMT_YUV420P;
  }
}

class FilterGraph {
 public:
  FilterGraph(AVPixelFormat format, Size size, const std::string &filters,
              int threads)
      : format_(format), size_(size), graph_(avfilter_graph_alloc()) {
    av_log_set_level(AV_LOG_ERROR);
    // Before the filters are made, which is when the threads are.
    graph_->nb_threads = threads;
    const std::string chain =
        "buffer@in=video_size=" + std::to_string(size.width) + "x" +
        std::to_string(size.height) + ":pix_fmt=" + std::to_string(format) +
        ":time_base=1/25," + filters + ",buffersink@out";
    if (avfilter_graph_parse_ptr(graph_, chain.c_str(), nullptr, nullptr,
                                 nullptr) >= 0 &&
        avfilter_graph_config(graph_, nullptr) >= 0) {
      source_ = avfilter_graph_get_filter(graph_, "buffer@in");
      sink_ = avfilter_graph_get_filter(graph_, "buffersink@out");
    }
  }
  ~FilterGraph() {
    out_.clear();
    avfilter_graph_free(&graph_);
  }
  FilterGraph(const FilterGraph &) = delete;
  FilterGraph &operator=(const FilterGraph &) = delete;

  // Not every build of FFmpeg has every filter.
  bool ok() const { return sink_ != nullptr; }

  // The frame is kept until the same key comes again, so that a ring of
  // destinations is a ring of the graph's frames too.
  const AVFrame &run(const vexo_img &src, const uint8_t *key) {
    Frame &out = out_[key];
    out.reset();
    const Frame in(av_frame_alloc());
    in->format = format_;
    in->width = size_.width;
    in->height = size_.height;
    if (format_ == AV_PIX_FMT_YUV420P10LE) {
      in->color_primaries = AVCOL_PRI_BT2020;
      in->color_trc = AVCOL_TRC_SMPTE2084;
      in->colorspace = AVCOL_SPC_BT2020_NCL;
      in->color_range = AVCOL_RANGE_MPEG;
    }
    for (int p = 0; p < 3 && src.plane[p]; ++p) {
      in->data[p] = src.plane[p];
      in->linesize[p] = src.stride[p];
    }
    // Without a counted reference the filter would copy the frame.
    in->buf[0] = av_buffer_create(
        src.plane[0], frame_bytes(src), [](void *, uint8_t *) {}, nullptr,
        AV_BUFFER_FLAG_READONLY);
    Frame result(av_frame_alloc());
    if (av_buffersrc_add_frame(source_, in.get()) < 0 ||
        av_buffersink_get_frame(sink_, result.get()) < 0) {
      std::abort();
    }
    out = std::move(result);
    return *out;
  }

 private:
  AVPixelFormat format_;
  Size size_;
  AVFilterGraph *graph_;
  AVFilterContext *source_ = nullptr, *sink_ = nullptr;
  std::map<const uint8_t *, Frame> out_;
};

struct Peer {
  std::string name, filters;
  double tolerance = 0;
  int threads = 1;
  // What it reads and writes.
  int32_t src_format, dst_format;
};

std::vector<Peer> peers_for(const Job &job) {
  const int32_t from = job.src_format, to = job.dst_format;
  if (job.task == kTurn && job.is_quarter_turn()) {
    return {
        {"FFmpeg transpose",
         job.option == VEXO_ROT_90R ? "transpose=clock" : "transpose=cclock", 0,
         1, from, to}};
  }
  if (job.task == kDeblock) {
    // Other filters than this library's. pp is told a quantiser, for without
    // one it changes nothing.
    return {{"FFmpeg deblock weak", "deblock=filter=weak:block=8", 0.5, 1, from,
             to},
            {"FFmpeg pp h1+v1", "pp=h1/v1/fq|24", 0.1, 1, from, to}};
  }
  if (is_usual_tone_mapping(job)) {
    // zscale takes planes only: it is given the same picture in planes, and
    // gives YUV420 where NV12 is asked for, which are two conversions less.
    const bool rgba = to == VEXO_FMT_RGBA8888;
    const std::string chain =
        std::string(kToneMapping) + (rgba ? "rgba" : "yuv420p");
    const double alike = rgba ? 0.1 : 0.4;
    const int32_t given = rgba ? VEXO_FMT_RGBA8888 : VEXO_FMT_YUV420;
    return {
        {"FFmpeg, 1 thread", chain, alike, 1, VEXO_FMT_YUV420PLANAR16, given},
        {"FFmpeg, 4 threads", chain, alike, 4, VEXO_FMT_YUV420PLANAR16, given}};
  }
  return {};
}

void add_ffmpeg(const Job &job, Contenders *out) {
  for (const Peer &peer : peers_for(job)) {
    const auto graph = [=] {
      return std::make_shared<FilterGraph>(
          name_of(peer.src_format), job.sizes.src, peer.filters, peer.threads);
    };
    if (!graph()->ok()) continue;
    const auto make = [=](bool fetch) -> Run {
      return [=, graph = graph()](uint8_t *s, uint8_t *d) {
        // Of a chain one frame is enough: the next is free to be written to,
        // which is touched memory.
        const uint8_t *key = job.task == kTurn ? d : nullptr;
        const AVFrame &frame = graph->run(job.src(s, peer.src_format), key);
        if (!fetch) return;
        const vexo_img dst = job.dst(d, peer.dst_format);
        av_image_copy(const_cast<uint8_t **>(dst.plane),
                      const_cast<int *>(dst.stride),
                      const_cast<const uint8_t **>(frame.data), frame.linesize,
                      static_cast<AVPixelFormat>(frame.format), frame.width,
                      frame.height);
      };
    };
    out->push_back({peer.name, peer.tolerance, make, peer.src_format,
                    peer.dst_format, -1,
                    peer.threads > 1 ? Contender::Threads::kByTheClock
                                     : Contender::Threads::kNone});
  }
}

const bool kRegistered =
    registered("avfilter", AV_STRINGIFY(LIBAVFILTER_VERSION), add_ffmpeg);

}  // namespace

}  // namespace bench
