// SPDX-License-Identifier: Apache-2.0
#include "picture.h"

#include <stdlib.h>  // posix_memalign

#include <algorithm>
#include <cmath>
#include <cstring>

namespace bench {
namespace {

struct Place {
  int plane, offset, step;
};

struct Layout {
  int32_t format;
  // Bytes from one place of a plane to the next; 0 where there is no plane.
  int32_t unit[3];
  // Of Y, U, V or R, G, B.
  Place places[3];
  // The planes behind the first are smaller by this power of two.
  int32_t chroma_shift = 1;
  // What the bytes of a row and the rows are padded to.
  int32_t stride_unit = 1, rows_unit = 1;
};

constexpr Layout kLayouts[] = {
    {VEXO_FMT_YUV400, {1}, {{0, 0, 1}}},
    {VEXO_FMT_YUV420, {1, 1, 1}, {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}}},
    {VEXO_FMT_YUV444, {1, 1, 1}, {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}}, 0},
    {VEXO_FMT_NV12, {1, 2}, {{0, 0, 1}, {1, 0, 2}, {1, 1, 2}}},
    {VEXO_FMT_NV21, {1, 2}, {{0, 0, 1}, {1, 1, 2}, {1, 0, 2}}},
    // Tiles lie in pairs beside each other.
    {VEXO_FMT_T64X32, {1, 2}, {{0, 0, 1}, {1, 0, 2}, {1, 1, 2}}, 1, 128, 32},
    {VEXO_FMT_YUYV, {2}, {{0, 0, 2}, {0, 1, 4}, {0, 3, 4}}},
    {VEXO_FMT_RGB565, {2}, {{0, 0, 2}, {0, 0, 2}, {0, 0, 2}}},
    {VEXO_FMT_RGB888, {3}, {{0, 0, 3}, {0, 1, 3}, {0, 2, 3}}},
    {VEXO_FMT_RGBA8888, {4}, {{0, 0, 4}, {0, 1, 4}, {0, 2, 4}}},
    {VEXO_FMT_BGRA8888, {4}, {{0, 2, 4}, {0, 1, 4}, {0, 0, 4}}},
    {VEXO_FMT_YUV420PLANAR16, {2, 2, 2}, {{0, 0, 2}, {1, 0, 2}, {2, 0, 2}}},
    {VEXO_FMT_P010LE, {2, 4}, {{0, 0, 2}, {1, 0, 4}, {1, 2, 4}}},
};

const Layout &layout_of(int32_t format) {
  const Layout *layout = kLayouts;
  // Of what has no picture it is any.
  while (layout->format != format && layout + 1 < std::end(kLayouts)) ++layout;
  return *layout;
}

int32_t padded(int32_t size, int32_t unit) {
  return (size + unit - 1) / unit * unit;
}

// Calls `code` with the channel's number, the channel and the sample's place.
template <typename Code>
void draw_codes(const vexo_img &img, const Code &code) {
  std::memset(img.plane[0], 0, frame_bytes(img));
  int c = 0;
  for (const Channel &channel : channels(img)) {
    for (int32_t y = 0; y < channel.height; ++y) {
      for (int32_t x = 0; x < channel.width; ++x) {
        channel.put(x, y, static_cast<int32_t>(code(c, channel, x, y)));
      }
    }
    ++c;
  }
}

void draw_waves(const vexo_img &img, bool rgb) {
  const double w = img.width[0], h = img.height[0];
  draw_codes(img, [=](int c, const Channel &channel, int32_t x, int32_t y) {
    constexpr double kPhase[] = {0, 1, 2.5};
    // Of chroma the place of the block's top-left pixel.
    const double u = x * std::floor(w / channel.width) / w;
    const double v = y * std::floor(h / channel.height) / h;
    const double wave = std::sin(7 * u + 3 * v * (c + 1) + kPhase[c]);
    const double level = rgb      ? 128 + 100 * wave
                         : c == 0 ? 126 + 30 * wave
                                  : 128 + 45 * wave;
    return std::lround(level) >> (8 - channel.bits);
  });
}

void draw_blocks(const vexo_img &img) {
  uint32_t noise = 1;
  draw_codes(img, [&](int c, const Channel &channel, int32_t x, int32_t y) {
    constexpr int32_t kBlock = 8;
    // Most steps are such that the deblocking filter takes them for artefacts.
    constexpr double kStep = 8;
    const double u = x / kBlock * kBlock / (1.0 * channel.width);
    const double v = y / kBlock * kBlock / (1.0 * channel.height);
    const double slow = std::sin(7 * u + 3 * v * (c + 1) + c);
    const double fine = std::sin(200 * u) * std::sin(150 * v);
    noise = noise * 1664525u + 1013904223u;
    return 126 + kStep * std::round((60 * slow + 20 * fine) / kStep) +
           (noise >> 30);
  });
}

void draw_hdr(const vexo_img &img) {
  const double w = img.width[0], h = img.height[0];
  draw_codes(img, [=](int c, const Channel &, int32_t x, int32_t y) {
    double code;
    if (c == 0) {
      const double wave =
          std::sin(7 * x / w + 3 * y / h) * std::sin(2 * x / w - 5 * y / h);
      const double detail = std::sin(x * 0.9) * std::sin(y * 0.7);
      // A little further than the ends, so that both are reached.
      const double level =
          std::clamp(0.5 + 0.46 * wave + 0.06 * detail, 0., 1.);
      code = 64 + 876 * level * std::sqrt(level);
    } else {
      const double wave = std::sin(11 * x / w + 5 * y * c / h + 1.5 * (c - 1));
      const double detail = std::sin(x * 0.5 + (c - 1)) * std::sin(y * 0.4);
      code = 512 + 60 * wave + 8 * detail;
    }
    return std::lround(std::clamp(code, 64., 960.));
  });
}

}  // namespace

vexo_img describe(int32_t format, Size size, uint8_t *bytes, int32_t row_unit) {
  const Layout &layout = layout_of(format);
  vexo_img img = {};
  img.format = format;
  for (int p = 0; p < 3 && layout.unit[p] > 0; ++p) {
    const int32_t shift = p > 0 ? layout.chroma_shift : 0;
    img.width[p] = size.width >> shift;
    img.height[p] = size.height >> shift;
    img.stride[p] = padded(img.width[p] * layout.unit[p],
                           row_unit > 1 ? row_unit : layout.stride_unit);
    img.buf_height[p] = padded(img.height[p], layout.rows_unit);
    img.plane[p] = bytes;
    if (bytes) bytes += ptrdiff_t{img.stride[p]} * img.buf_height[p];
  }
  return img;
}

int32_t row_bytes(const vexo_img &img, int plane) {
  return img.width[plane] * layout_of(img.format).unit[plane];
}

size_t frame_bytes(const vexo_img &img) {
  size_t bytes = 0;
  for (int p = 0; p < 3; ++p) {
    bytes += static_cast<size_t>(img.stride[p]) *
             static_cast<size_t>(img.buf_height[p]);
  }
  return bytes;
}

size_t picture_bytes(const vexo_img &img) {
  size_t bytes = 0;
  for (int p = 0; p < 3; ++p) {
    bytes += static_cast<size_t>(row_bytes(img, p)) *
             static_cast<size_t>(img.height[p]);
  }
  return bytes;
}

std::vector<Channel> channels(const vexo_img &img) {
  std::vector<Channel> list;
  for (const Place &p : layout_of(img.format).places) {
    if (p.step == 0) break;
    list.push_back({img.plane[p.plane], row_bytes(img, p.plane) / p.step,
                    img.height[p.plane], img.stride[p.plane], p.offset, p.step,
                    1, 0, 8, img.format == VEXO_FMT_T64X32});
    Channel &channel = list.back();
    if (img.format == VEXO_FMT_RGB565) {
      constexpr int kShift[] = {11, 5, 0}, kBits[] = {5, 6, 5};
      channel.bytes = 2;
      channel.shift = kShift[list.size() - 1];
      channel.bits = kBits[list.size() - 1];
    } else if (img.format >= VEXO_FMT_YUV420PLANAR16) {
      channel.bytes = 2;
      channel.shift = img.format == VEXO_FMT_P010LE ? 6 : 0;
      channel.bits = 10;
    }
  }
  return list;
}

void draw(Picture picture, const vexo_img &img) {
  if (picture == Picture::kBlocks) return draw_blocks(img);
  if (picture == Picture::kHdr) return draw_hdr(img);
  draw_waves(img, picture == Picture::kRgbWaves);
}

Block::Block(size_t size) {
  void *room = nullptr;
  if (posix_memalign(&room, 64, size) != 0) std::abort();
  data_.reset(static_cast<uint8_t *>(room));
  uint32_t state = 1;
  for (size_t i = 0; i < size; ++i) {
    state = state * 1664525u + 1013904223u;
    data_.get()[i] = static_cast<uint8_t>(16 + (state >> 16) % 220);
  }
}

}  // namespace bench
