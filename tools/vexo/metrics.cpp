// SPDX-License-Identifier: Apache-2.0
#include "metrics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vexo {
namespace {

// Where samples of a component lie: plane, first byte, bytes to the next.
struct Place {
  const char *name;
  int plane;
  int offset;
  int step;
};

std::vector<Place> places_of(int32_t code) {
  switch (code) {
    case VEXO_FMT_YUV400:
      return {{"y", 0, 0, 1}};
    case VEXO_FMT_YUV420:
    case VEXO_FMT_YUV422N:
    case VEXO_FMT_YUV444:
    case VEXO_FMT_YUV422W:
      return {{"y", 0, 0, 1}, {"u", 1, 0, 1}, {"v", 2, 0, 1}};
    case VEXO_FMT_NV12:
      return {{"y", 0, 0, 1}, {"u", 1, 0, 2}, {"v", 1, 1, 2}};
    case VEXO_FMT_YUV420PLANAR16:
      return {{"y", 0, 0, 2}, {"u", 1, 0, 2}, {"v", 2, 0, 2}};
    case VEXO_FMT_RGB888:
      return {{"r", 0, 0, 3}, {"g", 0, 1, 3}, {"b", 0, 2, 3}};
    case VEXO_FMT_RGBA8888:
      return {{"r", 0, 0, 4}, {"g", 0, 1, 4}, {"b", 0, 2, 4}, {"a", 0, 3, 4}};
    default:
      return {};
  }
}

// Sums over a window.
struct Sums {
  double a = 0;
  double b = 0;
  double squares = 0;
  double products = 0;

  void add(double x, double y) {
    a += x;
    b += y;
    squares += x * x + y * y;
    products += x * y;
  }

  double similarity(double count, int peak) const {
    const double c1 = 0.01 * peak * 0.01 * peak * count * count;
    const double c2 = 0.03 * peak * 0.03 * peak * count * (count - 1);
    const double variances = squares * count - a * a - b * b;
    const double covariance = products * count - a * b;
    return (2 * a * b + c1) * (2 * covariance + c2) /
           ((a * a + b * b + c1) * (variances + c2));
  }
};

}  // namespace

bool has_components(const Layout &layout) {
  return !places_of(layout.code).empty();
}

std::vector<Samples> components_of(const Frame &frame, int *peak) {
  const int32_t code = frame.layout().code;
  const bool words = code == VEXO_FMT_YUV420PLANAR16;
  *peak = words ? 1023 : 255;
  std::vector<Samples> components;
  for (const Place &place : places_of(code)) {
    Samples samples;
    samples.name = place.name;
    samples.width = frame.row_bytes(place.plane) / place.step;
    samples.height = frame.rows(place.plane);
    for (int y = 0; y < samples.height; ++y) {
      const uint8_t *at = frame.row(place.plane, y) + place.offset;
      for (int x = 0; x < samples.width; ++x, at += place.step) {
        const int value = words ? (at[0] | at[1] << 8) & 1023 : *at;
        samples.values.push_back(static_cast<uint16_t>(value));
      }
    }
    components.push_back(std::move(samples));
  }
  return components;
}

double squared_error(const Samples &a, const Samples &b) {
  double sum = 0;
  for (size_t i = 0; i < a.values.size(); ++i) {
    const double difference = double{0} + a.values[i] - b.values[i];
    sum += difference * difference;
  }
  return sum / static_cast<double>(std::max<size_t>(a.values.size(), 1));
}

double psnr_of(double error, int peak) {
  if (error == 0) return std::numeric_limits<double>::infinity();
  return 10 * std::log10(static_cast<double>(peak) * peak / error);
}

double ssim_of(const Samples &a, const Samples &b, int peak) {
  const int width = std::min(a.width, 8);
  const int height = std::min(a.height, 8);
  const int step_x = width < 8 ? 1 : 4;
  const int step_y = height < 8 ? 1 : 4;
  double sum = 0;
  int64_t windows = 0;
  for (int y = 0; y + height <= a.height; y += step_y) {
    for (int x = 0; x + width <= a.width; x += step_x) {
      Sums sums;
      for (int i = 0; i < height; ++i) {
        const size_t at =
            static_cast<size_t>(y + i) * static_cast<size_t>(a.width) +
            static_cast<size_t>(x);
        for (size_t k = at; k < at + static_cast<size_t>(width); ++k) {
          sums.add(a.values[k], b.values[k]);
        }
      }
      sum += sums.similarity(std::max(width * height, 2), peak);
      ++windows;
    }
  }
  return sum / static_cast<double>(windows);
}

}  // namespace vexo
