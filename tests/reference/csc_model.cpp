// SPDX-License-Identifier: Apache-2.0
// Written for plainness: one pixel at a time, one function for each way the
// samples can lie.
#include "csc_model.h"

namespace lox_test {
namespace {

int32_t half(int32_t n) { return (n + 1) / 2; }

int32_t full_size(int, int32_t n) { return n; }
int32_t half_chroma(int p, int32_t n) { return p == 0 ? n : half(n); }
// Whole pairs of luma as well: an odd row is read to its pair's end.
int32_t pairs_planar(int p, int32_t n) {
  return p == 0 ? half(n) * 2 : half(n);
}
int32_t interleaved(int p, int32_t n) { return p == 0 ? n : half(n) * 2; }
int32_t pairs_interleaved(int, int32_t n) { return half(n) * 2; }
int32_t packed_row(int, int32_t n) { return half(n) * 4; }
// U, Y0, V of an odd row's last pair; its second luma byte is not read.
int32_t uyvy_last_row(int, int32_t n) { return n % 2 == 0 ? n * 2 : n * 2 + 1; }

// Chroma row of a 4:2:0 picture. Widths without a multiple of four are
// converted a row at a time, which with an odd height gives the first row a
// chroma row of its own.
int32_t chroma_row(const vexo_img& img, int32_t y) {
  const bool shifted = img.width[0] % 4 != 0 && img.height[0] % 2 != 0;
  return (shifted ? y + 1 : y) / 2;
}

uint8_t* at(const vexo_img& img, int p, int32_t byte, int32_t row) {
  return img.plane[p] + row * img.stride[p] + byte;
}

Samples locate_yuv400(const vexo_img& img, int32_t x, int32_t y) {
  return {at(img, 0, x, y), nullptr, nullptr};
}
Samples locate_yuv420(const vexo_img& img, int32_t x, int32_t y) {
  const int32_t row = chroma_row(img, y);
  return {at(img, 0, x, y), at(img, 1, x / 2, row), at(img, 2, x / 2, row)};
}
Samples locate_yv12(const vexo_img& img, int32_t x, int32_t y) {
  const int32_t row = chroma_row(img, y);
  return {at(img, 0, x, y), at(img, 2, x / 2, row), at(img, 1, x / 2, row)};
}
Samples locate_nv12(const vexo_img& img, int32_t x, int32_t y) {
  uint8_t* pair = at(img, 1, x / 2 * 2, chroma_row(img, y));
  return {at(img, 0, x, y), pair, pair + 1};
}
Samples locate_nv21(const vexo_img& img, int32_t x, int32_t y) {
  uint8_t* pair = at(img, 1, x / 2 * 2, chroma_row(img, y));
  return {at(img, 0, x, y), pair + 1, pair};
}
Samples locate_yuv422n(const vexo_img& img, int32_t x, int32_t y) {
  return {at(img, 0, x, y), at(img, 1, x / 2, y), at(img, 2, x / 2, y)};
}
Samples locate_yuv422w(const vexo_img& img, int32_t x, int32_t y) {
  return {at(img, 0, x, y), at(img, 1, x, y / 2), at(img, 2, x, y / 2)};
}
Samples locate_yuv444(const vexo_img& img, int32_t x, int32_t y) {
  return {at(img, 0, x, y), at(img, 1, x, y), at(img, 2, x, y)};
}
Samples locate_uyvy(const vexo_img& img, int32_t x, int32_t y) {
  uint8_t* pair = at(img, 0, x / 2 * 4, y);
  return {pair + 1 + x % 2 * 2, pair, pair + 2};
}
Samples locate_yuyv(const vexo_img& img, int32_t x, int32_t y) {
  uint8_t* pair = at(img, 0, x / 2 * 4, y);
  return {pair + x % 2 * 2, pair + 1, pair + 3};
}

uint8_t top(int32_t channel) {
  return static_cast<uint8_t>(clamp_channel(channel >> 8, 255));
}

void pack_565(int32_t high, int32_t green, int32_t low, uint8_t* pixel) {
  const int32_t word = clamp_channel(high >> 11, 31) << 11 |
                       clamp_channel(green >> 10, 63) << 5 |
                       clamp_channel(low >> 11, 31);
  pixel[0] = static_cast<uint8_t>(word & 0xFF);
  pixel[1] = static_cast<uint8_t>(word >> 8);
}
void pack_rgb565(const Channels& c, uint8_t* p) { pack_565(c.r, c.g, c.b, p); }
void pack_bgr565(const Channels& c, uint8_t* p) { pack_565(c.b, c.g, c.r, p); }

// 24- and 32-bit pixels: which byte each channel has, and alpha's, if any.
template <int kR, int kG, int kB, int kA>
void pack_bytes(const Channels& c, uint8_t* pixel) {
  pixel[kR] = top(c.r);
  pixel[kG] = top(c.g);
  pixel[kB] = top(c.b);
  if constexpr (kA >= 0) pixel[kA] = 255;
}

}  // namespace

const Source kSourceTable[kSources] = {
    {"yuv400", VEXO_FMT_YUV400, 1, false, full_size, full_size, full_size,
     full_size, locate_yuv400},
    {"yuv420", VEXO_FMT_YUV420, 3, true, half_chroma, half_chroma, half_chroma,
     pairs_planar, locate_yuv420},
    {"yuv422n", VEXO_FMT_YUV422N, 3, false, half_chroma, full_size, half_chroma,
     half_chroma, locate_yuv422n},
    {"yuv444", VEXO_FMT_YUV444, 3, false, full_size, full_size, full_size,
     full_size, locate_yuv444},
    {"yv12", VEXO_FMT_YV12, 3, true, half_chroma, half_chroma, half_chroma,
     pairs_planar, locate_yv12},
    {"nv12", VEXO_FMT_NV12, 2, true, half_chroma, half_chroma, interleaved,
     pairs_interleaved, locate_nv12},
    {"nv21", VEXO_FMT_NV21, 2, true, half_chroma, half_chroma, interleaved,
     pairs_interleaved, locate_nv21},
    {"yuv422w", VEXO_FMT_YUV422W, 3, false, full_size, half_chroma, full_size,
     full_size, locate_yuv422w},
    {"uyvy", VEXO_FMT_UYVY, 1, false, full_size, full_size, packed_row,
     uyvy_last_row, locate_uyvy},
    {"yuyv", VEXO_FMT_YUYV, 1, false, full_size, full_size, packed_row,
     packed_row, locate_yuyv},
};

const Destination kDestinationTable[kDestinations] = {
    {"rgb565", VEXO_FMT_RGB565, 2, pack_rgb565},
    {"bgr565", VEXO_FMT_BGR565, 2, pack_bgr565},
    {"rgb888", VEXO_FMT_RGB888, 3, pack_bytes<0, 1, 2, -1>},
    {"bgr888", VEXO_FMT_BGR888, 3, pack_bytes<2, 1, 0, -1>},
    {"rgba8888", VEXO_FMT_RGBA8888, 4, pack_bytes<0, 1, 2, 3>},
    {"bgra8888", VEXO_FMT_BGRA8888, 4, pack_bytes<2, 1, 0, 3>},
    {"argb8888", VEXO_FMT_ARGB8888, 4, pack_bytes<1, 2, 3, 0>},
    {"abgr8888", VEXO_FMT_ABGR8888, 4, pack_bytes<3, 2, 1, 0>},
};

Channels convert(const Samples& s) {
  // Grey is replicated without expanding its range.
  if (s.u == nullptr) return {*s.y << 8, *s.y << 8, *s.y << 8};
  const int32_t y = *s.y - 16;
  const int32_t u = *s.u - 128;
  const int32_t v = *s.v - 128;
  const int32_t l = 298 * y + 128;
  return {l + 409 * v, l - 100 * u - 208 * v, l + 516 * u};
}

vexo_csc_kernel* kernel_of(int32_t src_format, int32_t dst_format) {
  struct Entry {
    int32_t src;
    int32_t dst;
    vexo_csc_kernel* kernel;
  };
#define LOX_PAIR(SRC, src, DST, dst) \
  Entry { VEXO_FMT_##SRC, VEXO_FMT_##DST, vexo_csc_##src##_to_##dst }
#define LOX_ALL_RGB(SRC, src)                                                 \
  LOX_PAIR(SRC, src, RGB565, rgb565), LOX_PAIR(SRC, src, BGR565, bgr565),     \
      LOX_PAIR(SRC, src, RGB888, rgb888), LOX_PAIR(SRC, src, BGR888, bgr888), \
      LOX_PAIR(SRC, src, RGBA8888, rgba8888),                                 \
      LOX_PAIR(SRC, src, BGRA8888, bgra8888),                                 \
      LOX_PAIR(SRC, src, ARGB8888, argb8888),                                 \
      LOX_PAIR(SRC, src, ABGR8888, abgr8888)
  static const Entry kKernels[] = {
      LOX_ALL_RGB(YUV420, yuv420),
      LOX_ALL_RGB(YUV422N, yuv422n),
      LOX_ALL_RGB(YUV444, yuv444),
      LOX_ALL_RGB(YV12, yv12),
      LOX_ALL_RGB(NV12, nv12),
      LOX_ALL_RGB(NV21, nv21),
      LOX_ALL_RGB(UYVY, uyvy),
      LOX_ALL_RGB(YUYV, yuyv),
      LOX_PAIR(YUV422W, yuv422w, RGB565, rgb565),
      LOX_PAIR(YUV422W, yuv422w, BGR565, bgr565),
      LOX_PAIR(YUV400, yuv400, RGB565, rgb565),
      LOX_PAIR(YUV400, yuv400, RGB888, rgb888),
  };
#undef LOX_ALL_RGB
#undef LOX_PAIR
  for (const Entry& e : kKernels) {
    if (e.src == src_format && e.dst == dst_format) return e.kernel;
  }
  return nullptr;
}

}  // namespace lox_test
