// SPDX-License-Identifier: Apache-2.0
//
// A comparison of times means something only when the same picture comes out.
// Peers round the matrix differently, so they are near and not equal; a wrong
// channel order, matrix or layout is tens of levels away.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "bench/contender.h"
#include "common/isa.h"

namespace bench {

namespace {

// Levels of 255. A 16-bit pixel has steps of 8 and 4, which a dithering peer
// rounds to either side.
constexpr double kNear = 2.5;
constexpr double kNear565 = 5.0;

// Slow waves in luma and in both chroma channels, so that a peer which
// interpolates chroma stays near; their phases differ, so that exchanged planes
// do not. The amplitudes keep nearly all of it inside the RGB cube, for a
// clamped channel would hide a difference, and are wide enough in chroma that
// another standard's matrix is not near.
uint8_t sample(int channel, double x, double y) {
  constexpr double kMean[] = {126, 128, 128};
  constexpr double kAmplitude[] = {30, 45, 45};
  constexpr double kPhase[] = {0, 1, 2.5};
  const double wave = std::sin(7 * x + 3 * y * (channel + 1) + kPhase[channel]);
  return static_cast<uint8_t>(
      std::lround(kMean[channel] + kAmplitude[channel] * wave));
}

void draw(const vexo_img &img) {
  const double w = img.width[0], h = img.height[0];
  const int32_t f = img.format;
  const int32_t stride = img.stride[0];
  for (int y = 0; y < img.height[0]; ++y) {
    uint8_t *row = img.plane[0] + static_cast<ptrdiff_t>(stride) * y;
    for (int x = 0; x < img.width[0]; ++x) {
      const bool packed = f == VEXO_FMT_YUYV;
      row[packed ? 2 * x : x] = sample(0, x / w, y / h);
      if (packed) {
        row[2 * x + 1] = sample(1 + x % 2, (x & ~1) / w, y / h);
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
            sample(1 + c, 2 * x / w, 2 * y / h);
      }
    }
  }
}

// Mean absolute difference of two frames of one format, in levels of 255 of a
// colour channel.
double distance(int32_t format, const std::vector<uint8_t> &a,
                const std::vector<uint8_t> &b) {
  int64_t sum = 0;
  if (format != VEXO_FMT_RGB565) {
    for (size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
    // Equal alpha bytes are no reason to call the colours nearer.
    const bool has_alpha =
        format == VEXO_FMT_RGBA8888 || format == VEXO_FMT_BGRA8888;
    return static_cast<double>(sum) /
           (static_cast<double>(a.size()) * (has_alpha ? 0.75 : 1));
  }
  for (size_t i = 0; i + 1 < a.size(); i += 2) {
    const int p = a[i] | a[i + 1] << 8, q = b[i] | b[i + 1] << 8;
    sum += std::abs((p >> 11) - (q >> 11)) * 8;
    sum += std::abs((p >> 5 & 63) - (q >> 5 & 63)) * 4;
    sum += std::abs((p & 31) - (q & 31)) * 8;
  }
  return static_cast<double>(sum) / (1.5 * static_cast<double>(a.size()));
}

}  // namespace

bool check_same_work(const Workload &workload, int width, int height,
                     const Contenders &contenders) {
  std::vector<uint8_t> src(frame_bytes(workload.src_format, width, height));
  draw(describe(workload.src_format, width, height, src.data()));
  bool same = true;
  for (const Contender &contender : contenders) {
    if (contender.kind == Contender::Kind::kBound) continue;
    const size_t size = frame_bytes(contender.dst_format, width, height);
    // Different fillings, so that pixels left unwritten differ.
    std::vector<uint8_t> expected(size, 1), found(size, 254);
    lox::isa_limit(lox::isa_best());
    const Workload order = {workload.id, workload.src_format,
                            contender.dst_format};
    if (run_library(order, width, height, src.data(), expected.data()) !=
        VEXO_OK) {
      std::fprintf(stderr, "%s: refused by the library\n", workload.id);
      return false;
    }
    if (contender.level >= 0) lox::isa_limit(contender.level);
    contender.run(src.data(), found.data());
    lox::isa_limit(lox::isa_best());
    const double d = distance(contender.dst_format, expected, found);
    // The forms of one library, and copies, are equal to the byte.
    const bool exact =
        contender.kind == Contender::Kind::kOwn || workload.is_copy();
    const double limit = exact                                     ? 0
                         : contender.dst_format == VEXO_FMT_RGB565 ? kNear565
                                                                   : kNear;
    const bool near = d <= limit;
    std::fprintf(near ? stdout : stderr,
                 "%-16s %4dx%-4d %-22s mean difference %.3f%s\n", workload.id,
                 width, height, contender.name.c_str(), d,
                 near ? "" : "  NOT THE SAME WORK");
    same &= near;
  }
  return same;
}

}  // namespace bench
