// SPDX-License-Identifier: Apache-2.0
//
// OpenCV, on one thread. It converts no 16-bit format to or from YUV, knows one
// standard, and takes NV12 as two pictures where it scales and turns.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "contender.h"

namespace bench {
namespace {

constexpr struct {
  const char *id;
  int code;
} kConversions[] = {
    {"nv12_rgba8888", cv::COLOR_YUV2RGBA_NV12},
    {"yuv420_rgba8888", cv::COLOR_YUV2RGBA_I420},
    {"nv21_rgb888", cv::COLOR_YUV2RGB_NV21},
    {"yuyv_rgba8888", cv::COLOR_YUV2RGBA_YUY2},
    {"rgba8888_yuv420", cv::COLOR_RGBA2YUV_I420},
};

// One plane, or a dense 4:2:0 picture with the chroma in the rows below.
cv::Mat matrix(const vexo_img &img, int plane, bool whole = false) {
  const int channels = row_bytes(img, plane) / img.width[plane];
  const int rows = img.height[plane];
  return {whole && img.height[1] > 0 ? rows + rows / 2 : rows, img.width[plane],
          CV_8UC(channels), img.plane[plane],
          static_cast<size_t>(img.stride[plane])};
}

using Filter = std::function<void(const cv::Mat &src, cv::Mat dst)>;

// Filters every plane.
void add_filter(const Job &job, const char *name, const Filter &filter,
                double tolerance, Contenders *out) {
  const auto work = [=](const vexo_img &src, const vexo_img &dst) {
    for (int p = 0; p < 3 && src.width[p] > 0; ++p) {
      filter(matrix(src, p), matrix(dst, p));
    }
  };
  add_frames(out, job, name, work, tolerance);
}

Filter turn(uint32_t rotation) {
  return [=](const cv::Mat &src, cv::Mat dst) {
    if (rotation == VEXO_ROT_HORI) return cv::flip(src, dst, 1);
    if (rotation == VEXO_ROT_VERT) return cv::flip(src, dst, 0);
    cv::rotate(src, dst,
               rotation == VEXO_ROT_90L   ? cv::ROTATE_90_COUNTERCLOCKWISE
               : rotation == VEXO_ROT_90R ? cv::ROTATE_90_CLOCKWISE
                                          : cv::ROTATE_180);
  };
}

Filter resize(int interpolation) {
  return [=](const cv::Mat &src, cv::Mat dst) {
    cv::resize(src, dst, dst.size(), 0, 0, interpolation);
  };
}

// Twice the picture less a blurred one, which is kept between frames.
Filter mask(const Filter &blur) {
  const auto blurred = std::make_shared<cv::Mat>();
  return [=](const cv::Mat &src, cv::Mat dst) {
    blurred->create(src.size(), CV_8UC1);
    blur(src, *blurred);
    cv::addWeighted(src, 2, *blurred, -1, 0, dst);
  };
}

// The very kernel, in floating point, and masks whose blurs of 5 x 5 weigh
// otherwise, which is what its users write.
void add_sharpening(const Job &job, Contenders *out) {
  const cv::Mat kernel = (cv::Mat_<float>(5, 5) << 0, 0, -1, 0, 0,  //
                          0, -1, -2, -1, 0,                         //
                          -1, -2, 32, -2, -1,                       //
                          0, -1, -2, -1, 0,                         //
                          0, 0, -1, 0, 0) /
                         16;
  const cv::Mat binomial = (cv::Mat_<float>(1, 5) << 1, 4, 6, 4, 1) / 16;
  const Filter filters[] = {[=](const cv::Mat &src, cv::Mat dst) {
                              cv::filter2D(src, dst, -1, kernel);
                            },
                            mask([=](const cv::Mat &src, cv::Mat dst) {
                              cv::sepFilter2D(src, dst, -1, binomial, binomial);
                            }),
                            mask([](const cv::Mat &src, cv::Mat dst) {
                              cv::GaussianBlur(src, dst, {5, 5}, 0);
                            })};
  const char *const names[] = {"OpenCV filter2D", "OpenCV sepFilter2D mask",
                               "OpenCV GaussianBlur mask"};
  for (int i = 0; i < 3; ++i) add_filter(job, names[i], filters[i], 0.05, out);
}

void add_opencv(const Job &job, Contenders *out) {
  cv::setNumThreads(0);
  for (const auto &conversion : kConversions) {
    if (std::string(conversion.id) != job.id) continue;
    const auto work = [=](const vexo_img &src, const vexo_img &dst) {
      cv::Mat to = matrix(dst, 0, true);
      cv::cvtColor(matrix(src, 0, true), to, conversion.code);
    };
    add_frames(out, job, "OpenCV", work, near(job));
  }
  if (job.task == kTurn) {
    add_filter(job, "OpenCV", turn(job.rotation()), near(job), out);
  } else if (job.task == kSharpen) {
    add_sharpening(job, out);
  }
  // 16-bit pixels it would scale as numbers.
  const bool scales = scales_plainly(job) && job.src_format != VEXO_FMT_RGB565;
  if (scales) {
    add_filter(job, "OpenCV LINEAR", resize(cv::INTER_LINEAR), near(job), out);
  }
  if (scales || job.is_means()) {
    add_filter(job, "OpenCV AREA", resize(cv::INTER_AREA), near(job), out);
  }
}

const bool kRegistered =
    registered({"OpenCV", cv::getVersionString(), add_opencv, nullptr});

}  // namespace
}  // namespace bench
