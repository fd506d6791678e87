// SPDX-License-Identifier: Apache-2.0
//
// A chain of FFmpeg's filters. It reads a frame in place and writes one of its
// own pool, which is kept until the next frame of the same key.
#pragma once

// Before FFmpeg's headers, which want its macros.
#include <cstdint>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavutil/frame.h>
}

#include <map>
#include <memory>
#include <string>

#include "bench/workloads.h"

namespace bench {

struct Colours {
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
};

class FilterGraph {
 public:
  // Check ok() before use.
  FilterGraph(AVPixelFormat format, Size size, const std::string &filters,
              int threads, const Colours &colours = {});

  bool ok() const { return ok_; }

  // False when no frame came out.
  bool run(const vexo_img &src, const uint8_t *key);

  // The frame that is kept for the key, or null.
  const AVFrame *result(const uint8_t *key) const;

 private:
  struct FreeFrame {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
  };
  struct FreeGraph {
    void operator()(AVFilterGraph *graph) const { avfilter_graph_free(&graph); }
  };
  using Frame = std::unique_ptr<AVFrame, FreeFrame>;

  std::unique_ptr<AVFilterGraph, FreeGraph> graph_;
  AVPixelFormat format_;
  Size size_;
  Colours colours_;
  AVFilterContext *source_ = nullptr, *sink_ = nullptr;
  bool ok_ = false;
  std::map<const uint8_t *, Frame> out_;
};

}  // namespace bench
