// SPDX-License-Identifier: Apache-2.0
//
// OpenCV's resize, rotate and flip, on one thread: planes and pixels of bytes,
// NV12 as two pictures. 16-bit pixels it would scale as numbers.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <span>

#include "bench/contender.h"

namespace bench {

namespace {

struct Filter {
  const char *name;
  int interpolation;
};

constexpr Filter kScaling[] = {
    {"OpenCV LINEAR", cv::INTER_LINEAR},
    {"OpenCV AREA", cv::INTER_AREA},
};
// Its Lanczos takes 8 by 8 samples, whatever the ratio.
constexpr Filter kReducing[] = {
    {"(OpenCV LANCZOS4)", cv::INTER_LANCZOS4},
    {"OpenCV AREA", cv::INTER_AREA},
};

cv::Mat matrix(const vexo_img &img, int plane) {
  const int channels = row_bytes(img, plane) / img.width[plane];
  return {img.height[plane], img.width[plane], CV_8UC(channels),
          img.plane[plane], static_cast<size_t>(img.stride[plane])};
}

void turn_plane(const cv::Mat &src, uint32_t rotation, cv::Mat dst) {
  switch (rotation) {
    case VEXO_ROT_90L:
      return cv::rotate(src, dst, cv::ROTATE_90_COUNTERCLOCKWISE);
    case VEXO_ROT_90R:
      return cv::rotate(src, dst, cv::ROTATE_90_CLOCKWISE);
    case VEXO_ROT_180:
      return cv::rotate(src, dst, cv::ROTATE_180);
    case VEXO_ROT_HORI:
      return cv::flip(src, dst, 1);
    default:
      return cv::flip(src, dst, 0);
  }
}

// Calls `each` for the planes of the two frames, as matrices.
template <typename Each>
void for_planes(const Workload &workload, const Sizes &sizes, uint8_t *s,
                uint8_t *d, const Each &each) {
  const vexo_img src = describe_src(workload, sizes, s);
  const vexo_img dst = describe_dst(workload, sizes, d);
  for (int p = 0; p < 3 && src.width[p] > 0; ++p) {
    each(matrix(src, p), matrix(dst, p));
  }
}

}  // namespace

void add_opencv_scaling(const Workload &workload, const Sizes &sizes,
                        Contenders *out) {
  if (workload.src_format == VEXO_FMT_RGB565) return;
  cv::setNumThreads(0);
  constexpr auto kPeer = Contender::Kind::kPeer;
  if (workload.task == Task::kTurn) {
    out->push_back({"OpenCV", kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      for_planes(workload, sizes, s, d,
                                 [&](const cv::Mat &src, const cv::Mat &dst) {
                                   turn_plane(src, workload.rotation, dst);
                                 });
                    },
                    workload.dst_format});
  }
  const bool reduces = workload.task == Task::kReduce;
  if (workload.task != Task::kScale && !reduces) return;
  for (const Filter &filter :
       reduces ? std::span<const Filter>(kReducing) : kScaling) {
    out->push_back({filter.name, kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      for_planes(workload, sizes, s, d,
                                 [&](const cv::Mat &src, cv::Mat dst) {
                                   cv::resize(src, dst, dst.size(), 0, 0,
                                              filter.interpolation);
                                 });
                    },
                    workload.dst_format});
  }
}

}  // namespace bench
