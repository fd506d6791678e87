// SPDX-License-Identifier: Apache-2.0
//
// Byte orders of the packed RGB layouts.
#include "pixels.h"

#include "error.h"

namespace vexo {
namespace {

// Where a pixel's R, G, B and A lie.
struct Order {
  int32_t code;
  int bytes;
  int channel[4];
};

constexpr Order kOrders[] = {
    {VEXO_FMT_RGB888, 3, {0, 1, 2, -1}},  {VEXO_FMT_BGR888, 3, {2, 1, 0, -1}},
    {VEXO_FMT_RGBA8888, 4, {0, 1, 2, 3}}, {VEXO_FMT_BGRA8888, 4, {2, 1, 0, 3}},
    {VEXO_FMT_ARGB8888, 4, {1, 2, 3, 0}}, {VEXO_FMT_ABGR8888, 4, {3, 2, 1, 0}},
};

const Order *order_of(int32_t code) {
  for (const Order &order : kOrders) {
    if (order.code == code) return &order;
  }
  return nullptr;
}

bool is_565(int32_t code) {
  return code == VEXO_FMT_RGB565 || code == VEXO_FMT_BGR565;
}

// Repeats the top bits below, so that the largest value becomes 255.
uint8_t widen(int value, int bits) {
  return static_cast<uint8_t>(value << (8 - bits) | value >> (2 * bits - 8));
}

}  // namespace

bool PixelUnpacker::takes(const Layout &layout) {
  return is_565(layout.code) || order_of(layout.code) != nullptr;
}

PixelUnpacker::PixelUnpacker(const Layout &layout)
    : code_(layout.code),
      alpha_(!is_565(layout.code) && order_of(layout.code)->bytes == 4) {}

const uint8_t *PixelUnpacker::row(const Frame &frame, int y) {
  const uint8_t *const src = frame.row(0, y);
  if (code_ == VEXO_FMT_RGB888 || code_ == VEXO_FMT_RGBA8888) return src;
  const size_t width = static_cast<size_t>(frame.width());
  const size_t channels = alpha_ ? 4 : 3;
  row_.resize(width * channels);
  if (is_565(code_)) {
    const size_t top = code_ == VEXO_FMT_RGB565 ? 0 : 2;
    for (size_t x = 0; x < width; ++x) {
      const int word = src[2 * x] | src[2 * x + 1] << 8;
      row_[3 * x + top] = widen(word >> 11, 5);
      row_[3 * x + 1] = widen(word >> 5 & 63, 6);
      row_[3 * x + 2 - top] = widen(word & 31, 5);
    }
    return row_.data();
  }
  const Order &order = *order_of(code_);
  const size_t bytes = static_cast<size_t>(order.bytes);
  for (size_t x = 0; x < width; ++x) {
    for (size_t c = 0; c < channels; ++c) {
      row_[x * channels + c] = src[x * bytes + order.channel[c]];
    }
  }
  return row_.data();
}

}  // namespace vexo
