/* SPDX-License-Identifier: Apache-2.0 */
/*
 * OpenCV's cv::Mat as a picture, for C++. It needs the headers of OpenCV's
 * core; the library itself knows nothing of it.
 */
#pragma once

#include <opencv2/core/mat.hpp>

#include "../picture.h"

/*
 * The matrix's rows, without a copy: CV_8UC1 is yuv400, CV_8UC3 bgr888, CV_8UC4
 * bgra8888, as OpenCV has its channels. Returns what vexo_picture_wrap does;
 * VEXO_ERR_UNSUPPORTED for other types and more than two dimensions.
 */
inline int32_t vexo_picture_of_mat(vexo_img *img, const cv::Mat &mat) {
  const int32_t format = mat.dims > 2            ? -1
                         : mat.type() == CV_8UC1 ? VEXO_FMT_YUV400
                         : mat.type() == CV_8UC3 ? VEXO_FMT_BGR888
                         : mat.type() == CV_8UC4 ? VEXO_FMT_BGRA8888
                                                 : -1;
  if (mat.rows > 1 && mat.step[0] > INT32_MAX) return VEXO_ERR_ARG;
  uint8_t *const planes[] = {mat.data};
  const int32_t strides[] = {static_cast<int32_t>(mat.step[0])};
  return vexo_picture_wrap(img, format, mat.cols, mat.rows, planes, strides);
}
