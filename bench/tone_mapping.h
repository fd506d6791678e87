// SPDX-License-Identifier: Apache-2.0
//
// What is measured of tone mapping, on the host and in the ARM guest alike: the
// workloads, the picture that all of them read, and the work of a call without
// its threads.
#pragma once

#include "bench/workloads.h"
#include "hdr/context.h"

namespace bench {

struct ToneMapping {
  const char *id;
  int32_t src_format;
  int32_t dst_format;
  // One of VEXO_HDR_.
  int32_t kind = VEXO_HDR_HDR10;
  // Has peers beside it, and is measured at a second size, too.
  bool is_main = false;
};

inline constexpr ToneMapping kToneMappings[] = {
    {"hdr_p010_nv12", VEXO_FMT_P010LE, VEXO_FMT_NV12, VEXO_HDR_HDR10, true},
    {"hdr_p010_rgba8888", VEXO_FMT_P010LE, VEXO_FMT_RGBA8888, VEXO_HDR_HDR10,
     true},
    {"hdr_p010_yuv420", VEXO_FMT_P010LE, VEXO_FMT_YUV420},
    {"hdr_p010_rgb888", VEXO_FMT_P010LE, VEXO_FMT_RGB888},
    {"hdr_planar16_nv12", VEXO_FMT_YUV420PLANAR16, VEXO_FMT_NV12},
    {"hdr_hlg_nv12", VEXO_FMT_P010LE, VEXO_FMT_NV12, VEXO_HDR_HLG},
};

// What any destination takes: the bands of RGB888 lie as far apart as those of
// four bytes a pixel.
inline size_t tone_mapped_bytes(Size size) {
  return size_t{4} * static_cast<size_t>(size.width) *
         static_cast<size_t>(size.height);
}

// Draws into a frame of 10 bits: slow waves with fine detail on them, mostly
// dark, with highlights. Luma takes every code from 64 to 940, chroma varies.
void draw_hdr(const vexo_img &img);

// The context that a call with these makes, for a white of 1000 nits.
void build_context(const ToneMapping &mapping, const vexo_img &src,
                   const vexo_img &dst, vexo_hdr_context *context);

// All bands, one after the other, on this thread.
void map_bands(const vexo_hdr_context &context);

}  // namespace bench
