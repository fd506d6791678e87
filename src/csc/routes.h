// SPDX-License-Identifier: Apache-2.0
//
// The tables of routes that the conversion entry points look formats up in.
#pragma once

#include <cstddef>
#include <cstdint>

#include "csc/drivers.h"
#include "orumlox/img.h"

namespace lox {

struct Route {
  int32_t src_format, dst_format;
  Driver *driver;
  int from, to;

  void convert(const vexo_img &src, const vexo_img &dst,
               RowRange rows = kAllRows, int64_t of_pixels = 0) const {
    driver({src.plane, src.width, src.height, src.stride, dst.stride, dst.plane,
            rows, of_pixels},
           from, to);
  }
};

// What vexo_csc answers, and by which route it converts: without one it writes
// nothing.
struct Found {
  int32_t status;
  const Route *route;
};
Found find_route(const vexo_img &src, const vexo_img &dst);

// Whether rows are converted in pairs of pixels to the end, one beyond an odd
// width.
bool in_whole_pairs(const Route &route);

// Whether the first row of such a size shares its chroma with no other.
bool has_first_row_alone(const Route &route, int32_t width, int32_t height);

struct Routes {
  const Route *first;
  size_t count;

  const Route *begin() const { return first; }
  const Route *end() const { return first + count; }
};

template <size_t kCount>
constexpr Routes all_of(const Route (&routes)[kCount]) {
  return {routes, kCount};
}

// Of a standard's entry point; none of a number that is no standard.
Routes csc_routes(int32_t standard);

// Pictures in 256 x 16 tiles are converted only if they are wider than this.
constexpr int32_t kT256x16WiderThan = 1280;

}  // namespace lox
