// SPDX-License-Identifier: Apache-2.0
//
// Sharpening by OpenCV, on one thread: the very kernel by filter2D, in floating
// point, and unsharp masks, which take the picture twice less a blurred one.
// Those are what its users write; their blurs of 5 x 5 weigh otherwise.
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/contender.h"

namespace bench {

namespace {

using Filter = std::function<void(const cv::Mat &src, cv::Mat dst)>;

cv::Mat sharpening_kernel() {
  cv::Mat kernel = (cv::Mat_<float>(5, 5) << 0, 0, -1, 0, 0,  //
                    0, -1, -2, -1, 0,                         //
                    -1, -2, 32, -2, -1,                       //
                    0, -1, -2, -1, 0,                         //
                    0, 0, -1, 0, 0);
  kernel /= 16;
  return kernel;
}

cv::Mat binomial() {
  cv::Mat kernel = (cv::Mat_<float>(1, 5) << 1, 4, 6, 4, 1);
  kernel /= 16;
  return kernel;
}

// The blurred picture is kept between frames.
Filter unsharp_mask(const Filter &blur, const cv::Size &size) {
  const auto blurred = std::make_shared<cv::Mat>(size, CV_8UC1);
  return [=](const cv::Mat &src, cv::Mat dst) {
    blur(src, *blurred);
    cv::addWeighted(src, 2, *blurred, -1, 0, dst);
  };
}

}  // namespace

void add_opencv_sharpening(const Workload &workload, const Sizes &sizes,
                           Contenders *out) {
  if (workload.task != Task::kSharpen) return;
  cv::setNumThreads(0);
  const cv::Size size(sizes.src.width, sizes.src.height);
  const auto add = [&](const char *name, const Filter &filter) {
    out->push_back({name, Contender::Kind::kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      filter(cv::Mat(size, CV_8UC1, s),
                             cv::Mat(size, CV_8UC1, d));
                    },
                    workload.dst_format});
  };
  add("OpenCV filter2D",
      [kernel = sharpening_kernel()](const cv::Mat &src, cv::Mat dst) {
        cv::filter2D(src, dst, -1, kernel);
      });
  const auto add_mask = [&](const char *name, const Filter &blur) {
    add(name, unsharp_mask(blur, size));
  };
  add_mask("OpenCV sepFilter2D mask",
           [kernel = binomial()](const cv::Mat &src, cv::Mat dst) {
             cv::sepFilter2D(src, dst, -1, kernel, kernel);
           });
  add_mask("OpenCV GaussianBlur mask", [](const cv::Mat &src, cv::Mat dst) {
    cv::GaussianBlur(src, dst, {5, 5}, 0);
  });
  add_mask("OpenCV blur mask", [](const cv::Mat &src, cv::Mat dst) {
    cv::blur(src, dst, {5, 5});
  });
}

}  // namespace bench
