// SPDX-License-Identifier: Apache-2.0
//
// libyuv. It names a pixel by its word, so R, G, B, A in memory is its "ABGR"
// and R, G, B its "RAW".
#include <libyuv.h>

#include <string>

#include "bench/contender.h"

namespace bench {

namespace {

using Kind = Contender::Kind;

}  // namespace

void add_libyuv(const Workload &workload, const Sizes &sizes, Contenders *out) {
  const int w = sizes.src.width, h = sizes.src.height;
  const size_t luma = static_cast<size_t>(w) * static_cast<size_t>(h);
  const size_t chroma = luma / 4;
  const auto add = [&](const char *name, auto run) {
    out->push_back({name, Kind::kPeer, run, workload.dst_format});
  };
  const std::string id = workload.id;
  if (id == "nv12_rgba8888") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::NV12ToABGR(s, w, s + luma, w, d, w * 4, w, h);
    });
  } else if (id == "yuv420_rgba8888") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::I420ToABGR(s, w, s + luma, w / 2, s + luma + chroma, w / 2, d,
                         w * 4, w, h);
    });
  } else if (id == "yuv420_rgba8888_bt709") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::H420ToABGR(s, w, s + luma, w / 2, s + luma + chroma, w / 2, d,
                         w * 4, w, h);
    });
  } else if (id == "yuv420_rgba8888_bt601fr") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::J420ToABGR(s, w, s + luma, w / 2, s + luma + chroma, w / 2, d,
                         w * 4, w, h);
    });
  } else if (id == "yuv420_rgb565") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::I420ToRGB565(s, w, s + luma, w / 2, s + luma + chroma, w / 2, d,
                           w * 2, w, h);
    });
    // More work than asked for, and yet the faster of the two on x86.
    add("libyuv dither", [=](uint8_t *s, uint8_t *d) {
      libyuv::I420ToRGB565Dither(s, w, s + luma, w / 2, s + luma + chroma,
                                 w / 2, d, w * 2, nullptr, w, h);
    });
  } else if (id == "nv21_rgb888") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::NV21ToRAW(s, w, s + luma, w, d, w * 3, w, h);
    });
  } else if (id == "yuyv_rgba8888") {
    // There is no YUY2ToABGR; the same work with R and B the other way round.
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::YUY2ToARGB(s, w * 2, d, w * 4, w, h);
    });
    out->back().dst_format = VEXO_FMT_BGRA8888;
  } else if (id == "rgba8888_nv12") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::ABGRToNV12(s, w * 4, d, w, d + luma, w, w, h);
    });
  } else if (id == "rgba8888_yuv420") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::ABGRToI420(s, w * 4, d, w, d + luma, w / 2, d + luma + chroma,
                         w / 2, w, h);
    });
  } else if (id == "rgb565_nv12") {
    // There is no RGB565ToNV12; the nearest writes as much, U and V in planes.
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::RGB565ToI420(s, w * 2, d, w, d + luma, w / 2, d + luma + chroma,
                           w / 2, w, h);
    });
    out->back().dst_format = VEXO_FMT_YUV420;
  } else if (id == "yuv420_nv12") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::I420ToNV12(s, w, s + luma, w / 2, s + luma + chroma, w / 2, d, w,
                         d + luma, w, w, h);
    });
  } else if (id == "nv12_yuv420") {
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::NV12ToI420(s, w, s + luma, w, d, w, d + luma, w / 2,
                         d + luma + chroma, w / 2, w, h);
    });
  } else if (id == "nv12_nv21") {
    // The exchange is the same in both directions.
    add("libyuv", [=](uint8_t *s, uint8_t *d) {
      libyuv::NV21ToNV12(s, w, s + luma, w, d, w, d + luma, w, w, h);
    });
  } else if (id == "copy_8b") {
    add("libyuv",
        [=](uint8_t *s, uint8_t *d) { libyuv::CopyPlane(s, w, d, w, w, h); });
  }
}

std::string libyuv_version() { return std::to_string(LIBYUV_VERSION); }

}  // namespace bench
