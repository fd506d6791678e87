// SPDX-License-Identifier: Apache-2.0
//
// Deblocking of planes: which edges are filtered, and in which order.
#include <cstddef>
#include <cstdint>

#include "orumlox/vqe.h"
#include "vqe/deblock_rule.h"
#include "vqe/vqe_rows.h"

namespace {

constexpr ptrdiff_t kBlock = 8;
// Samples before an edge that its filter changes.
constexpr ptrdiff_t kBefore = 2;

// No step across an edge is larger, so more strength changes nothing more.
constexpr int32_t kMaxStrength = 160;

struct Plane {
  uint8_t *first;
  ptrdiff_t stride, width, height;
  int strength;

  ptrdiff_t edges_down() const { return height / kBlock - 1; }
  ptrdiff_t edges_across() const { return width / kBlock - 1; }
  uint8_t *row(ptrdiff_t y) const { return first + y * stride; }
};

Plane plane_of(uint8_t *first, int32_t strength, int32_t stride, int32_t width,
               int32_t height) {
  return {first, stride, width, height,
          strength < kMaxStrength ? strength : kMaxStrength};
}

// Whether rows have no bytes in common. The order of their samples does not
// matter then.
bool rows_apart(const Plane &p) {
  return p.stride >= p.width || p.stride <= -p.width;
}

void in_order_down(const Plane &p) {
  for (ptrdiff_t k = 1; k <= p.edges_down(); ++k) {
    for (ptrdiff_t x = 0; x < p.width; ++x) {
      lox::deblock_sample(p.row(k * kBlock - kBefore) + x, p.stride,
                          p.strength);
    }
  }
}

void in_order_across(const Plane &p) {
  for (ptrdiff_t k = 1; k <= p.edges_across(); ++k) {
    for (ptrdiff_t y = 0; y < p.height; ++y) {
      lox::deblock_sample(p.row(y) + k * kBlock - kBefore, 1, p.strength);
    }
  }
}

void across(const Plane &p, ptrdiff_t first_row, ptrdiff_t rows) {
  lox::vqe_rows().deblock_vertical(p.row(first_row) + kBlock - kBefore,
                                   p.stride, p.edges_across(),
                                   static_cast<int>(rows), p.strength);
}

// The horizontal edges, the vertical ones or both of a plane. The rule filters
// all horizontal edges first. Here the vertical edges of a row of blocks follow
// as soon as the edge below it is done, while the row is in the caches: results
// equal the rule's order because rows do not overlap.
void deblock(const Plane &p, bool down, bool sideways) {
  if (p.strength < 1 || p.width < 1 || p.height < 1) return;
  if (!rows_apart(p) || p.strength > lox::kMaxByteStrength) {
    if (down) in_order_down(p);
    if (sideways) in_order_across(p);
    return;
  }
  sideways = sideways && p.edges_across() > 0;
  for (ptrdiff_t y = 0; y < p.height; y += kBlock) {
    const ptrdiff_t below = y + kBlock;
    if (down && below + kBlock <= p.height) {
      lox::vqe_rows().deblock_horizontal(p.row(below - kBefore), p.stride,
                                         p.width, p.strength);
    }
    if (sideways) {
      across(p, y, below <= p.height ? kBlock : p.height - y);
    }
  }
}

}  // namespace

extern "C" {

void vexo_dbf8x8_h263_hor(uint8_t *plane, int32_t strength, int32_t stride,
                          int32_t width, int32_t height) {
  deblock(plane_of(plane, strength, stride, width, height), true, false);
}

void vexo_dbf8x8_h263_ver(uint8_t *plane, int32_t strength, int32_t stride,
                          int32_t width, int32_t height) {
  deblock(plane_of(plane, strength, stride, width, height), false, true);
}

void vexo_dbf8x8(uint8_t *plane, int32_t strength, int32_t stride,
                 int32_t width, int32_t height) {
  constexpr int32_t kLimit = 12;
  deblock(plane_of(plane, strength < kLimit ? strength : kLimit, stride, width,
                   height),
          true, true);
}

int32_t vexo_dbf8x8_yuv(const vexo_img *img, uint32_t strength) {
  // Quirk: not the 12 of a single plane, because callers pass up to 15.
  constexpr uint32_t kLimit = 15;
  if (strength > kLimit) return VEXO_ERR_ARG;
  for (int p = 0; p < 3; ++p) {
    if (img->plane[p] == nullptr) continue;
    deblock(plane_of(img->plane[p], static_cast<int32_t>(strength),
                     img->stride[p], img->width[p], img->height[p]),
            true, true);
  }
  return VEXO_OK;
}

}  // extern "C"
