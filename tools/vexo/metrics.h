// SPDX-License-Identifier: Apache-2.0
//
// How far two frames are apart.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frame.h"

namespace vexo {

// One component of a frame.
struct Samples {
  std::string name;
  int width = 0;
  int height = 0;
  std::vector<uint16_t> values;
};

// Planes, or the channels of pixels; of 8 bits or 10. `peak` is the largest
// sample.
std::vector<Samples> components_of(const Frame &frame, int *peak);
// Whether the layout is one whose components are found.
bool has_components(const Layout &layout);

// The mean of the squared differences; sizes are equal.
double squared_error(const Samples &a, const Samples &b);
// In decibels; infinity for 0.
double psnr_of(double squared_error, int peak);
// The mean of the structural similarity over windows of 8 x 8 samples, 4 apart
// (over the whole plane where it is smaller).
double ssim_of(const Samples &a, const Samples &b, int peak);

}  // namespace vexo
