// SPDX-License-Identifier: Apache-2.0
//
// What a destination must be.
#include "arguments.h"

#include <algorithm>

namespace orumlox_python {

namespace {

// The bytes between the first and behind the last one of a plane.
struct Span {
  uintptr_t begin, end;
  int64_t row, stride;
};

Span span_of(const vexo_img &img, const vexo_img &dense, int32_t p) {
  // Of tiles the geometry has the stride.
  const int64_t stride = is_tiled(img.format) ? dense.stride[p] : img.stride[p];
  const auto first = reinterpret_cast<uintptr_t>(img.plane[p]);
  const auto last =
      first + static_cast<uintptr_t>(stride * (dense.buf_height[p] - 1));
  const int64_t row = dense.stride[p];
  return {std::min(first, last),
          std::max(first, last) + static_cast<uintptr_t>(row), row,
          stride < 0 ? -stride : stride};
}

bool overlap(const Span &a, const Span &b) {
  if (a.end <= b.begin || b.end <= a.begin) return false;
  if (a.stride != b.stride || a.stride == 0) return true;
  // Windows of one array, beside each other.
  const int64_t shift = static_cast<int64_t>((b.begin - a.begin) %
                                             static_cast<uintptr_t>(a.stride));
  const int64_t from_a =
      a.begin <= b.begin
          ? shift
          : a.stride - static_cast<int64_t>((a.begin - b.begin) %
                                            static_cast<uintptr_t>(a.stride));
  return from_a < a.row || from_a + b.row > a.stride;
}

bool overlap(const vexo_img &a, const vexo_img &b) {
  vexo_img dense_a, dense_b;
  // The library refuses what has no geometry.
  if (vexo_picture_geometry(&dense_a, a.format, a.width[0], a.height[0], 1) !=
          VEXO_OK ||
      vexo_picture_geometry(&dense_b, b.format, b.width[0], b.height[0], 1) !=
          VEXO_OK) {
    return false;
  }
  for (int32_t p = 0; p < vexo_format_planes(a.format); ++p) {
    for (int32_t q = 0; q < vexo_format_planes(b.format); ++q) {
      if (overlap(span_of(a, dense_a, p), span_of(b, dense_b, q))) return true;
    }
  }
  return false;
}

}  // namespace

void check_pair(const char *name, const vexo_img &src, const Picture &dst) {
  if (dst.read_only) {
    throw py::value_error(std::string(name) + ": out is read-only");
  }
  if (overlap(src, dst.img)) {
    throw py::value_error(std::string(name) + ": out overlaps the source");
  }
}

}  // namespace orumlox_python
