// SPDX-License-Identifier: Apache-2.0
//
// How a frame lies in memory, all planes in one block, what its samples are,
// and the pictures that are drawn into it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "orumlox/orumlox.h"

namespace bench {

struct Size {
  int32_t width, height;
};

// A dense frame; of 4:2:0 width and height are even. Tiles are whole, rows
// begin at multiples of row_unit.
vexo_img describe(int32_t format, Size size, uint8_t *bytes,
                  int32_t row_unit = 1);

int32_t row_bytes(const vexo_img &img, int plane);

// What a frame takes, and how much of that belongs to the picture.
size_t frame_bytes(const vexo_img &img);
size_t picture_bytes(const vexo_img &img);

// The samples of one channel, wherever they lie.
struct Channel {
  uint8_t *plane;
  int32_t width, height, stride;
  // From the row's first byte to the sample's, and from sample to sample.
  int32_t offset, step;
  // Where the sample is in its word of one byte or of two, low byte first.
  int bytes, shift, bits;
  bool tiled;

  uint8_t *at(int32_t x, int32_t y) const {
    const int32_t column = offset + step * x;
    return plane + (tiled ? ptrdiff_t{vexo_get_tile_offset(step * width, height,
                                                           column, y)}
                          : ptrdiff_t{stride} * y + column);
  }
  int32_t code(int32_t x, int32_t y) const {
    const uint8_t *p = at(x, y);
    const int32_t word = bytes == 1 ? *p : p[0] | p[1] << 8;
    return word >> shift & ((1 << bits) - 1);
  }
  // In levels of 255.
  int32_t level(int32_t x, int32_t y) const { return code(x, y) << 8 >> bits; }
  // The word must have zeros there.
  void put(int32_t x, int32_t y, int32_t code) const {
    uint8_t *p = at(x, y);
    p[0] = static_cast<uint8_t>(p[0] | code << shift);
    if (bytes == 2) p[1] = static_cast<uint8_t>(p[1] | code << shift >> 8);
  }
};

// Y, U, V or R, G, B, whatever their order in memory.
std::vector<Channel> channels(const vexo_img &img);

enum class Picture {
  // Slow waves, different ones in every channel, so that a peer which averages
  // stays near and exchanged channels do not. Of RGB they are as wide as can
  // be; of YUV nearly all is inside the RGB cube, for a clamped channel would
  // hide a difference.
  kYuvWaves,
  kRgbWaves,
  // What a coarse codec leaves: 8 x 8 blocks of few levels, with steps between
  // them and a little noise on them.
  kBlocks,
  // 10 bits: slow waves with fine detail, mostly dark, with highlights. Luma
  // takes every code from 64 to 940.
  kHdr
};

void draw(Picture picture, const vexo_img &img);

// Owns 64-byte aligned memory, all of it filled with noise: bytes from 16 to
// 235, which are a picture in any layout.
class Block {
 public:
  explicit Block(size_t size);
  uint8_t *data() const { return data_.get(); }

 private:
  struct Free {
    void operator()(uint8_t *p) const { std::free(p); }
  };
  std::unique_ptr<uint8_t, Free> data_;
};

}  // namespace bench
