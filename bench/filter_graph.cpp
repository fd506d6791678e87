// SPDX-License-Identifier: Apache-2.0
#include "bench/filter_graph.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/log.h>
}

namespace bench {

FilterGraph::FilterGraph(AVPixelFormat format, Size size,
                         const std::string &filters, int threads,
                         const Colours &colours)
    : graph_(avfilter_graph_alloc()),
      format_(format),
      size_(size),
      colours_(colours) {
  av_log_set_level(AV_LOG_ERROR);
  // Before the filters are made, which is when the threads are.
  graph_->nb_threads = threads;
  const std::string chain =
      "buffer@in=video_size=" + std::to_string(size.width) + "x" +
      std::to_string(size.height) + ":pix_fmt=" + std::to_string(format) +
      ":time_base=1/25," + filters + ",buffersink@out";
  if (avfilter_graph_parse_ptr(graph_.get(), chain.c_str(), nullptr, nullptr,
                               nullptr) < 0 ||
      avfilter_graph_config(graph_.get(), nullptr) < 0) {
    return;
  }
  source_ = avfilter_graph_get_filter(graph_.get(), "buffer@in");
  sink_ = avfilter_graph_get_filter(graph_.get(), "buffersink@out");
  ok_ = source_ && sink_;
}

bool FilterGraph::run(const vexo_img &src, const uint8_t *key) {
  Frame &out = out_[key];
  out.reset();
  const Frame in(av_frame_alloc());
  in->format = format_;
  in->width = size_.width;
  in->height = size_.height;
  in->color_primaries = colours_.primaries;
  in->color_trc = colours_.transfer;
  in->colorspace = colours_.space;
  in->color_range = colours_.range;
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
    return false;
  }
  out = std::move(result);
  return true;
}

const AVFrame *FilterGraph::result(const uint8_t *key) const {
  const auto found = out_.find(key);
  return found == out_.end() ? nullptr : found->second.get();
}

}  // namespace bench
