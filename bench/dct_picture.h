// SPDX-License-Identifier: Apache-2.0
//
// Pictures that are reduced, by channel: drawing them, and what their
// reductions differ by.
#pragma once

#include <array>
#include <vector>

#include "bench/workloads.h"

namespace bench {

// One channel of a picture, wherever it lies: bytes from row to row and from
// sample to sample.
struct Component {
  uint8_t *first;
  int32_t width, height;
  ptrdiff_t stride, step;

  uint8_t &at(int32_t x, int32_t y) const {
    return first[stride * y + step * x];
  }
};
// Y, U, V or R, G, B.
using Components = std::array<Component, 3>;

// Of NV12, YUV420, YUV444 (for R, G and B) or RGBA8888.
Components components(const vexo_img &img);

// Slow waves, other ones in each channel, with finer ones on them, down to a
// twentieth of the width: all of it is in the smallest reduction, too.
void draw_smooth(const vexo_img &img);

// What a photograph has and more: slow waves, rings that become finer towards
// the right until no reduction can hold them, edges and noise.
void draw_detailed(const vexo_img &img);

// Of two channels of one size, in levels of 255.
double mean_difference(const Component &a, const Component &b);

// The peak signal-to-noise ratio in dB, at most 99; the reference is one of the
// channels' size, row by row.
double psnr(const Component &a, const std::vector<double> &reference);

}  // namespace bench
