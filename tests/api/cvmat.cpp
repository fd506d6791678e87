// SPDX-License-Identifier: Apache-2.0
// A part of a matrix becomes a picture, and is converted into another.
#include <orumlox/adaptors/cvmat.h>

#include <opencv2/core.hpp>

int main() {
  cv::Mat whole(20, 40, CV_8UC4, cv::Scalar(1, 2, 3, 4));
  const cv::Mat part = whole(cv::Rect(3, 2, 9, 7));
  cv::Mat bgr(7, 9, CV_8UC3);
  vexo_img from;
  vexo_img to;
  if (vexo_picture_of_mat(&from, part) != VEXO_OK) return 1;
  if (vexo_picture_of_mat(&to, bgr) != VEXO_OK) return 2;
  if (vexo_picture_convert(nullptr, &from, &to, nullptr) != VEXO_OK) return 3;
  if (bgr.at<cv::Vec3b>(6, 8) != cv::Vec3b(1, 2, 3)) return 4;
  const cv::Mat floats(7, 9, CV_32F);
  return vexo_picture_of_mat(&to, floats) == VEXO_ERR_UNSUPPORTED ? 0 : 5;
}
