// SPDX-License-Identifier: Apache-2.0
//
// OpenCV's cvtColor, on one thread. It converts no 16-bit format to or from
// YUV, and knows one standard.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "bench/contender.h"

namespace bench {

namespace {

struct Route {
  int src_format, dst_format, code;
};

constexpr Route kRoutes[] = {
    {VEXO_FMT_NV12, VEXO_FMT_RGBA8888, cv::COLOR_YUV2RGBA_NV12},
    {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888, cv::COLOR_YUV2RGBA_I420},
    {VEXO_FMT_NV21, VEXO_FMT_RGB888, cv::COLOR_YUV2RGB_NV21},
    {VEXO_FMT_YUYV, VEXO_FMT_RGBA8888, cv::COLOR_YUV2RGBA_YUY2},
    {VEXO_FMT_RGBA8888, VEXO_FMT_YUV420, cv::COLOR_RGBA2YUV_I420},
};

cv::Mat matrix(int format, int w, int h, uint8_t *bytes) {
  switch (format) {
    case VEXO_FMT_YUYV:
      return {h, w, CV_8UC2, bytes};
    case VEXO_FMT_RGB888:
      return {h, w, CV_8UC3, bytes};
    case VEXO_FMT_RGBA8888:
      return {h, w, CV_8UC4, bytes};
    default:
      // A 4:2:0 picture is one, the chroma in the rows below the luma.
      return {h + h / 2, w, CV_8UC1, bytes};
  }
}

}  // namespace

void add_opencv(const Workload &workload, const Sizes &sizes, Contenders *out) {
  if (workload.color_std != VEXO_STD_DEFAULT) return;
  cv::setNumThreads(0);
  const int w = sizes.src.width, h = sizes.src.height;
  for (const Route &route : kRoutes) {
    if (route.src_format != workload.src_format ||
        route.dst_format != workload.dst_format) {
      continue;
    }
    const Route r = route;
    out->push_back({"OpenCV", Contender::Kind::kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      cv::Mat dst = matrix(r.dst_format, w, h, d);
                      cv::cvtColor(matrix(r.src_format, w, h, s), dst, r.code);
                    },
                    workload.dst_format});
  }
}

std::string opencv_version() { return cv::getVersionString(); }

}  // namespace bench
