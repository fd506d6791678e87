// SPDX-License-Identifier: Apache-2.0
#include "bench/dct_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace bench {

namespace {

// Calls `level` with the channel and the place of each sample, in pixels of the
// whole picture and from 0 to 1 across it.
template <typename Level>
void draw(const vexo_img &img, const Level &level) {
  const double width = img.width[0], height = img.height[0];
  const Components channels = components(img);
  for (int c = 0; c < 3; ++c) {
    const Component &channel = channels[static_cast<size_t>(c)];
    const double across = width / channel.width, down = height / channel.height;
    for (int32_t y = 0; y < channel.height; ++y) {
      for (int32_t x = 0; x < channel.width; ++x) {
        const double px = (x + 0.5) * across, py = (y + 0.5) * down;
        channel.at(x, y) = static_cast<uint8_t>(std::lround(
            std::clamp(level(c, px, py, px / width, py / height), 16., 235.)));
      }
    }
  }
}

double slow_wave(int channel, double u, double v) {
  return std::sin(7 * u + 3 * v * (channel + 1) + 1.2 * channel);
}

// From -1 to 1, no two neighbours related.
double noise(int channel, double px, double py) {
  auto state = static_cast<uint32_t>(px) * 2654435761u ^
               static_cast<uint32_t>(py) * 2246822519u ^
               static_cast<uint32_t>(channel) * 3266489917u;
  state = (state ^ state >> 15) * 2246822519u;
  state = (state ^ state >> 13) * 3266489917u;
  return static_cast<double>(state >> 16) / 32767.5 - 1;
}

}  // namespace

Components components(const vexo_img &img) {
  const bool rgba = img.format == VEXO_FMT_RGBA8888;
  const bool pairs = img.format == VEXO_FMT_NV12;
  Components channels;
  for (int c = 0; c < 3; ++c) {
    const int p = rgba ? 0 : pairs ? std::min(c, 1) : c;
    const int step = rgba ? 4 : pairs && c > 0 ? 2 : 1;
    const int offset = rgba ? c : pairs && c > 0 ? c - 1 : 0;
    channels[static_cast<size_t>(c)] = {img.plane[p] + offset, img.width[p],
                                        img.height[p], img.stride[p], step};
  }
  return channels;
}

void draw_smooth(const vexo_img &img) {
  draw(img, [](int c, double, double, double u, double v) {
    constexpr double kTurn = 6.283185307179586;
    const double fine =
        std::sin(kTurn * (12 + 4 * c) * u) * std::sin(kTurn * 8 * v + c);
    return 126 + 80 * slow_wave(c, u, v) + 20 * fine;
  });
}

void draw_detailed(const vexo_img &img) {
  draw(img, [](int c, double px, double py, double u, double v) {
    // Half a turn a pixel at the right.
    const double rings =
        std::sin(0.0008 * (px * px + py * py) + c) * (1 - 0.5 * v);
    const double shade =
        std::fmod(3 * u + 2 * v + 0.3 * c, 0.5) < 0.25 ? 1 : -1;
    return 126 + 40 * slow_wave(c, u, v) + 30 * rings + 25 * shade +
           8 * noise(c, px, py);
  });
}

double mean_difference(const Component &a, const Component &b) {
  int64_t sum = 0;
  for (int32_t y = 0; y < a.height; ++y) {
    for (int32_t x = 0; x < a.width; ++x) {
      sum += std::abs(a.at(x, y) - b.at(x, y));
    }
  }
  return static_cast<double>(sum) / a.width / a.height;
}

double psnr(const Component &a, const std::vector<double> &reference) {
  double sum = 0;
  size_t i = 0;
  for (int32_t y = 0; y < a.height; ++y) {
    for (int32_t x = 0; x < a.width; ++x) {
      const double d = a.at(x, y) - reference[i++];
      sum += d * d;
    }
  }
  const double mean = sum / a.width / a.height;
  return mean > 0 ? std::min(10 * std::log10(255. * 255 / mean), 99.) : 99;
}

}  // namespace bench
