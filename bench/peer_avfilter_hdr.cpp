// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's usual chain of filters for tone mapping, on one thread and on four.
// zscale takes planar pictures only: P010 goes through a scaler that the graph
// puts in front by itself, as users get it, and the same picture in planes is
// there as well. It gives YUV420 where NV12 is asked for, which is one
// conversion less.
#include "bench/filter_graph.h"
#include "bench/hdr_contender.h"
#include "common/isa.h"

namespace bench {

namespace {

constexpr char kChain[] =
    "zscale=t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,"
    "tonemap=tonemap=hable:desat=0,zscale=t=bt709:m=bt709:r=tv,format=";

constexpr Colours kPq = {AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084,
                         AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG};

class FilterChain final : public ToneMapper {
 public:
  FilterChain(AVPixelFormat from, bool to_rgba, Size size, int threads)
      : graph_(from, size, std::string(kChain) + (to_rgba ? "rgba" : "yuv420p"),
               threads, kPq) {}

  bool ok() const { return graph_.ok(); }

  // One key for all destinations: its frame is free for the next to be written
  // to, which is touched memory.
  bool run(const vexo_img &src, uint8_t *) override {
    return graph_.run(src, nullptr);
  }

  Channels channels(const uint8_t *) const override {
    const AVFrame &frame = *graph_.result(nullptr);
    const bool rgba = frame.format == AV_PIX_FMT_RGBA;
    const int32_t w = frame.width, h = frame.height;
    Channels channels = {};
    for (int c = 0; c < 3; ++c) {
      const int half = !rgba && c > 0;
      channels[static_cast<size_t>(c)] = {
          rgba ? frame.data[0] + c : frame.data[c], w >> half, h >> half,
          frame.linesize[rgba ? 0 : c], rgba ? 4 : 1};
    }
    return channels;
  }

 private:
  FilterGraph graph_;
};

constexpr struct {
  const char *name;
  int32_t format;
  AVPixelFormat as;
  int threads;
} kForms[] = {
    {"FFmpeg p010, 1 thread", VEXO_FMT_P010LE, AV_PIX_FMT_P010LE, 1},
    {"FFmpeg p010, 4 threads", VEXO_FMT_P010LE, AV_PIX_FMT_P010LE, 4},
    {"FFmpeg planes, 1 thread", VEXO_FMT_YUV420PLANAR16, AV_PIX_FMT_YUV420P10LE,
     1},
    {"FFmpeg planes, 4 threads", VEXO_FMT_YUV420PLANAR16,
     AV_PIX_FMT_YUV420P10LE, 4},
};

}  // namespace

void add_avfilter_tone_mapping(const ToneMapping &mapping, Size size,
                               HdrContenders *out) {
  // Not every build of FFmpeg has both filters.
  if (!mapping.is_main || !avfilter_get_by_name("zscale") ||
      !avfilter_get_by_name("tonemap")) {
    return;
  }
  const bool to_rgba = mapping.dst_format == VEXO_FMT_RGBA8888;
  for (const auto &form : kForms) {
    out->push_back({form.name, false, form.format, form.threads > 1,
                    lox::isa_best(), [=]() -> std::unique_ptr<ToneMapper> {
                      auto chain = std::make_unique<FilterChain>(
                          form.as, to_rgba, size, form.threads);
                      if (!chain->ok()) return nullptr;
                      return chain;
                    }});
  }
}

}  // namespace bench
