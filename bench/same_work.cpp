// SPDX-License-Identifier: Apache-2.0
//
// A comparison of times means something only when the same picture comes out.
// Peers round the matrix differently, so they are near and not equal; a wrong
// channel order, matrix, standard or layout is further away than the limits.
// Where only the places of samples change, all are equal.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "bench/contender.h"
#include "bench/frames.h"
#include "common/isa.h"

namespace bench {

namespace {

// Levels of 255; the nearest of the other standards are 4 levels off. A 16-bit
// pixel has steps of 8 and 4, which a dithering peer rounds to either side. Of
// a 16-bit source, channels get zeros as their low bits here and may get a copy
// of their high ones from a peer.
constexpr double kNear = 2.5;
constexpr double kNearTo565 = 5.0;
constexpr double kNearFrom565 = 3.5;

// Scalers differ in where they take samples: this library's from the top left,
// peers' around the middle, by up to half a sample of the smaller picture. Some
// weigh in few bits, and one halves the chroma of RGB pictures.
constexpr double kNearScaled = 3.5;

double limit_of(const Workload &workload) {
  const int32_t src_format = workload.src_format;
  const int32_t dst_format = workload.dst_format;
  if (workload.task != Task::kConvert) return kNearScaled;
  if (dst_format == VEXO_FMT_RGB565) return kNearTo565;
  return src_format == VEXO_FMT_RGB565 ? kNearFrom565 : kNear;
}

// Slow waves in every channel, so that a peer which interpolates chroma or
// averages it stays near; their phases differ, so that exchanged channels do
// not. The amplitudes in YUV keep nearly all of it inside the RGB cube, for a
// clamped channel would hide a difference, and are wide enough in chroma that
// another standard's matrix is not near.
struct Wave {
  double mean, amplitude;
};
constexpr Wave kYuv[] = {{126, 30}, {128, 45}, {128, 45}};
constexpr Wave kRgb[] = {{128, 100}, {128, 100}, {128, 100}};

uint8_t sample(const Wave (&waves)[3], int channel, double x, double y) {
  constexpr double kPhase[] = {0, 1, 2.5};
  const double wave = std::sin(7 * x + 3 * y * (channel + 1) + kPhase[channel]);
  return static_cast<uint8_t>(
      std::lround(waves[channel].mean + waves[channel].amplitude * wave));
}

void draw_rgb(const vexo_img &img) {
  const double w = img.width[0], h = img.height[0];
  for (int y = 0; y < img.height[0]; ++y) {
    uint8_t *p = img.plane[0] + static_cast<ptrdiff_t>(img.stride[0]) * y;
    for (int x = 0; x < img.width[0]; ++x) {
      const int r = sample(kRgb, 0, x / w, y / h);
      const int g = sample(kRgb, 1, x / w, y / h);
      const int b = sample(kRgb, 2, x / w, y / h);
      if (img.format == VEXO_FMT_RGB565) {
        const int word = r >> 3 << 11 | g >> 2 << 5 | b >> 3;
        *p++ = static_cast<uint8_t>(word);
        *p++ = static_cast<uint8_t>(word >> 8);
      } else {
        for (const int c : {r, g, b}) *p++ = static_cast<uint8_t>(c);
        if (img.format != VEXO_FMT_RGB888) *p++ = 255;
      }
    }
  }
}

void draw_yuv(const vexo_img &img) {
  const double w = img.width[0], h = img.height[0];
  const int32_t f = img.format;
  const int32_t stride = img.stride[0];
  for (int y = 0; y < img.height[0]; ++y) {
    uint8_t *row = img.plane[0] + static_cast<ptrdiff_t>(stride) * y;
    for (int x = 0; x < img.width[0]; ++x) {
      const bool packed = f == VEXO_FMT_YUYV;
      row[packed ? 2 * x : x] = sample(kYuv, 0, x / w, y / h);
      if (packed) {
        row[2 * x + 1] = sample(kYuv, 1 + x % 2, (x & ~1) / w, y / h);
      }
    }
  }
  if (f == VEXO_FMT_YUYV || f == VEXO_FMT_YUV400) return;
  const bool pairs = f == VEXO_FMT_NV12 || f == VEXO_FMT_NV21;
  for (int y = 0; y < img.height[1]; ++y) {
    for (int x = 0; x < img.width[1]; ++x) {
      for (int c = 0; c < 2; ++c) {
        const int place = f == VEXO_FMT_NV21 ? 1 - c : c;
        const int p = pairs ? 1 : 1 + c;
        img.plane[p][static_cast<ptrdiff_t>(img.stride[p]) * y +
                     (pairs ? 2 * x + place : x)] =
            sample(kYuv, 1 + c, 2 * x / w, 2 * y / h);
      }
    }
  }
}

// Draws NV12, puts it into tiles byte by byte, and returns it.
std::vector<uint8_t> draw_tiles(const vexo_img &tiles) {
  const Size size = {tiles.width[0], tiles.height[0]};
  std::vector<uint8_t> nv12(
      frame_bytes(describe(VEXO_FMT_NV12, size, nullptr)));
  const vexo_img img = describe(VEXO_FMT_NV12, size, nv12.data());
  draw_yuv(img);
  const uint8_t *from = nv12.data();
  for (int p = 0; p < 2; ++p) {
    const int width = img.stride[p], height = img.height[p];
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        tiles.plane[p][vexo_get_tile_offset(width, height, x, y)] = *from++;
      }
    }
  }
  return nv12;
}

// Mean absolute difference of `size` bytes, in levels of 255 of a channel.
double difference(int32_t format, const uint8_t *a, const uint8_t *b,
                  size_t size) {
  int64_t sum = 0;
  if (format != VEXO_FMT_RGB565) {
    for (size_t i = 0; i < size; ++i) sum += std::abs(a[i] - b[i]);
    // Equal alpha bytes are no reason to call the colours nearer.
    const bool has_alpha =
        format == VEXO_FMT_RGBA8888 || format == VEXO_FMT_BGRA8888;
    return static_cast<double>(sum) /
           (static_cast<double>(size) * (has_alpha ? 0.75 : 1));
  }
  for (size_t i = 0; i + 1 < size; i += 2) {
    const int p = a[i] | a[i + 1] << 8, q = b[i] | b[i + 1] << 8;
    sum += std::abs((p >> 11) - (q >> 11)) * 8;
    sum += std::abs((p >> 5 & 63) - (q >> 5 & 63)) * 4;
    sum += std::abs((p & 31) - (q & 31)) * 8;
  }
  return static_cast<double>(sum) / (1.5 * static_cast<double>(size));
}

// Of two frames of one format: that of the plane that differs most, for chroma
// planes are small.
double distance(const vexo_img &a, const vexo_img &b) {
  double largest = 0;
  for (int p = 0; p < 3 && a.height[p] > 0; ++p) {
    double sum = 0;
    for (int y = 0; y < a.height[p]; ++y) {
      const ptrdiff_t at = ptrdiff_t{a.stride[p]} * y;
      sum += difference(a.format, a.plane[p] + at, b.plane[p] + at,
                        static_cast<size_t>(row_bytes(a, p)));
    }
    largest = std::max(largest, sum / a.height[p]);
  }
  return largest;
}

}  // namespace

bool check_same_work(const Workload &workload, const Sizes &sizes,
                     const Contenders &contenders) {
  const Block src(frame_bytes(describe_src(workload, sizes, nullptr)));
  const vexo_img img = describe_src(workload, sizes, src.data());
  // No peer can tell what tiles must give; the picture drawn into them does.
  std::vector<uint8_t> drawn;
  if (img.format == VEXO_FMT_T64X32) {
    drawn = draw_tiles(img);
  } else if (img.format >= VEXO_FMT_RGB565) {
    draw_rgb(img);
  } else {
    draw_yuv(img);
  }
  bool same = true;
  for (const Contender &contender : contenders) {
    if (contender.kind == Contender::Kind::kCopy ||
        contender.kind == Contender::Kind::kBound) {
      continue;
    }
    Workload order = workload;
    order.dst_format = contender.dst_format;
    const size_t size = frame_bytes(describe_dst(order, sizes, nullptr));
    const Block expected(size), found(size);
    // Different fillings, so that pixels left unwritten differ.
    std::fill_n(expected.data(), size, uint8_t{1});
    std::fill_n(found.data(), size, uint8_t{254});
    lox::isa_limit(lox::isa_best());
    if (run_library(order, sizes, src.data(), expected.data()) != VEXO_OK) {
      std::fprintf(stderr, "%s: refused by the library\n", workload.id);
      return false;
    }
    std::copy(drawn.begin(), drawn.end(), expected.data());
    if (contender.level >= 0) lox::isa_limit(contender.level);
    contender.run(src.data(), found.data());
    if (contender.fetch) contender.fetch(found.data());
    lox::isa_limit(lox::isa_best());
    const double d = distance(describe_dst(order, sizes, expected.data()),
                              describe_dst(order, sizes, found.data()));
    // The forms of one library are equal to the byte.
    const bool exact =
        contender.kind == Contender::Kind::kOwn || workload.keeps_samples();
    const double limit = exact ? 0 : limit_of(order);
    const bool near = d <= limit;
    std::fprintf(near ? stdout : stderr,
                 "%-24s %4dx%-4d %-30s mean difference %.3f%s\n", workload.id,
                 sizes.dst.width, sizes.dst.height, contender.name.c_str(), d,
                 near ? "" : "  NOT THE SAME WORK");
    same &= near;
  }
  return same;
}

}  // namespace bench
