// SPDX-License-Identifier: Apache-2.0
//
// OpenCV's cvtColor, on one thread. It converts to no 16-bit format from YUV.
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
};

}  // namespace

void add_opencv(const Workload &workload, int w, int h, Contenders *out) {
  cv::setNumThreads(1);
  for (const Route &route : kRoutes) {
    if (route.src_format != workload.src_format ||
        route.dst_format != workload.dst_format) {
      continue;
    }
    // A 4:2:0 picture is one matrix, the chroma in the rows below the luma.
    const bool packed = route.src_format == VEXO_FMT_YUYV;
    const int src_rows = packed ? h : h + h / 2;
    const int src_type = packed ? CV_8UC2 : CV_8UC1;
    const int dst_type =
        route.dst_format == VEXO_FMT_RGB888 ? CV_8UC3 : CV_8UC4;
    const int code = route.code;
    out->push_back({"OpenCV", Contender::Kind::kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      const cv::Mat src(src_rows, w, src_type, s);
                      cv::Mat dst(h, w, dst_type, d);
                      cv::cvtColor(src, dst, code);
                    },
                    workload.dst_format});
  }
}

std::string opencv_version() { return cv::getVersionString(); }

}  // namespace bench
