// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg: swscale, at equal sizes with its two fastest settings, else with
// those that weigh samples as this library does or widen their filters; and
// filters, for quarter turns, deblocking and its usual chain for tone mapping.
// A graph of them reads a frame in place and writes one of its own pool.
#include <cstdint>  // before FFmpeg's headers, which want its macros

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/cpu.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <cstdlib>
#include <map>
#include <utility>

#include "contender.h"

namespace bench {
namespace {

AVPixelFormat av_name(int32_t format) {
  constexpr std::pair<int32_t, AVPixelFormat> kNames[] = {
      {VEXO_FMT_YUV400, AV_PIX_FMT_GRAY8},
      {VEXO_FMT_YUV420, AV_PIX_FMT_YUV420P},
      {VEXO_FMT_NV12, AV_PIX_FMT_NV12},
      {VEXO_FMT_NV21, AV_PIX_FMT_NV21},
      {VEXO_FMT_YUYV, AV_PIX_FMT_YUYV422},
      {VEXO_FMT_RGB565, AV_PIX_FMT_RGB565LE},
      {VEXO_FMT_RGB888, AV_PIX_FMT_RGB24},
      {VEXO_FMT_RGBA8888, AV_PIX_FMT_RGBA},
      {VEXO_FMT_YUV420PLANAR16, AV_PIX_FMT_YUV420P10LE}};
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
    case kInterpolate:
      // Three planes else take its conversion that repeats chroma.
      return {{"swscale BILINEAR",
               SWS_BILINEAR | SWS_FULL_CHR_H_INT |
                   (job.src_format == VEXO_FMT_YUV420 ? SWS_ACCURATE_RND : 0)}};
    case kScale:
      if (!scales_plainly(job) && job.src_format != kI010) return {};
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
  const AVPixelFormat from = av_name(job.src_format);
  const AVPixelFormat to = av_name(job.dst_format);
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

constexpr char kToneMapping[] =
    "zscale=t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,"
    "tonemap=tonemap=hable:desat=0,zscale=t=bt709:m=bt709:r=tv,format=";

struct FreeFrame {
  void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

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

void add_graph(const Job &job, Contenders *out, const char *name,
               const std::string &filters, double tolerance, int32_t from,
               int32_t to, int threads = 1) {
  const auto graph = [=, size = job.sizes.src] {
    return std::make_shared<FilterGraph>(av_name(from), size, filters, threads);
  };
  if (!graph()->ok()) return;
  const auto make = [=](bool fetch) -> Run {
    return [=, graph = graph()](uint8_t *s, uint8_t *d) {
      // Of a chain one frame is enough: the next is free to be written to,
      // which is touched memory.
      const uint8_t *key = job.task == kTurn ? d : nullptr;
      const AVFrame &frame = graph->run(job.src(s, from), key);
      if (!fetch) return;
      const vexo_img dst = job.dst(d, to);
      av_image_copy(
          const_cast<uint8_t **>(dst.plane), const_cast<int *>(dst.stride),
          const_cast<const uint8_t **>(frame.data), frame.linesize,
          static_cast<AVPixelFormat>(frame.format), frame.width, frame.height);
    };
  };
  out->push_back({name, tolerance, make, from, to, -1,
                  threads > 1 ? Contender::Threads::kByTheClock
                              : Contender::Threads::kNone});
}

void add_filters(const Job &job, Contenders *out) {
  const int32_t from = job.src_format, to = job.dst_format;
  if (job.task == kTurn && job.is_quarter_turn()) {
    add_graph(
        job, out, "FFmpeg transpose",
        job.option == VEXO_ROT_90R ? "transpose=clock" : "transpose=cclock", 0,
        from, to);
  } else if (job.task == kDeblock) {
    // Another filter than this library's. It is told a quantiser, for without
    // one it changes nothing.
    add_graph(job, out, "FFmpeg pp h1+v1", "pp=h1/v1/fq|24", 0.1, from, to);
  } else if (is_usual_tone_mapping(job)) {
    // zscale takes planes only: it is given the same picture in planes, and
    // gives YUV420 where NV12 is asked for, which are two conversions less.
    const bool rgba = to == VEXO_FMT_RGBA8888;
    for (const int threads : {1, 4}) {
      add_graph(job, out,
                threads == 1 ? "FFmpeg, 1 thread" : "FFmpeg, 4 threads",
                std::string(kToneMapping) + (rgba ? "rgba" : "yuv420p"),
                rgba ? 0.1 : 0.4, VEXO_FMT_YUV420PLANAR16,
                rgba ? to : VEXO_FMT_YUV420, threads);
    }
  }
}

// Its portable code rounds otherwise and would not do the same work: it is
// given SSE2 there, which every 64-bit x86 has.
void hold_av(int level) {
#if defined(__x86_64__)
  constexpr int kSse2 = AV_CPU_FLAG_CMOV | AV_CPU_FLAG_MMX |
                        AV_CPU_FLAG_MMXEXT | AV_CPU_FLAG_SSE | AV_CPU_FLAG_SSE2;
  constexpr int kSse41 =
      kSse2 | AV_CPU_FLAG_SSE3 | AV_CPU_FLAG_SSSE3 | AV_CPU_FLAG_SSE4;
  constexpr int kAvx512 = AV_CPU_FLAG_AVX512 | AV_CPU_FLAG_AVX512ICL;
  constexpr int kMasks[] = {kSse2, kSse41, ~kAvx512};
  av_force_cpu_flags(av_get_cpu_flags() & kMasks[level]);
#else
  av_force_cpu_flags(level);
#endif
}

const bool kRegistered =
    registered(
        {"swscale", AV_STRINGIFY(LIBSWSCALE_VERSION), add_swscale, hold_av}) &&
    registered(
        {"avfilter", AV_STRINGIFY(LIBAVFILTER_VERSION), add_filters, hold_av});

}  // namespace
}  // namespace bench
