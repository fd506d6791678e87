// SPDX-License-Identifier: Apache-2.0
//
// Enhancements of one picture of blocks by all contenders. This library's forms
// are equal to the byte. Peers have other filters: what they change, and not
// the picture, which hardly changes, has to go together with what this library
// changes. Of a peer that does nothing that is 0.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "bench/enhancing.h"
#include "bench/frames.h"
#include "bench/vqe_bench.h"
#include "common/isa.h"

namespace bench {

namespace {

constexpr double kAlike = 0.5;
// The borders of a picture are everybody's own.
constexpr int32_t kMargin = 8;

// Of the changes that two outputs are from the source, in one plane.
double correlation(const vexo_img &src, const vexo_img &a, const vexo_img &b,
                   int plane) {
  double ab = 0, aa = 0, bb = 0;
  for (int32_t y = kMargin; y < src.height[plane] - kMargin; ++y) {
    const ptrdiff_t row = ptrdiff_t{src.stride[plane]} * y;
    for (int32_t x = kMargin; x < src.width[plane] - kMargin; ++x) {
      const int before = src.plane[plane][row + x];
      const double by_a = a.plane[plane][row + x] - before;
      const double by_b = b.plane[plane][row + x] - before;
      ab += by_a * by_b;
      aa += by_a * by_a;
      bb += by_b * by_b;
    }
  }
  return aa > 0 && bb > 0 ? ab / std::sqrt(aa * bb) : 0;
}

}  // namespace

bool check_same_enhancement(const Workload &workload, const Sizes &sizes,
                            const Contenders &contenders) {
  const size_t size = frame_bytes(describe_src(workload, sizes, nullptr));
  const Block src(size), expected(size), found(size);
  const vexo_img from = describe_src(workload, sizes, src.data());
  const vexo_img own = describe_dst(workload, sizes, expected.data());
  const vexo_img theirs = describe_dst(workload, sizes, found.data());
  draw_blocks(from);
  bool same = true;
  for (const Contender &contender : contenders) {
    if (contender.kind == Contender::Kind::kBound) continue;
    // The first is this library's best form.
    const bool first = &contender == contenders.data();
    uint8_t *dst = (first ? expected : found).data();
    std::fill_n(dst, size, uint8_t{1});
    if (contender.level >= 0) lox::isa_limit(contender.level);
    contender.run(src.data(), dst);
    lox::isa_limit(lox::isa_best());
    if (contender.fetch) contender.fetch(dst);
    bool good = true;
    std::string figures;
    if (contender.kind == Contender::Kind::kOwn) {
      good = std::memcmp(expected.data(), dst, size) == 0;
      figures = good ? "equal" : "not equal";
    } else {
      figures = "correlation";
      for (int p = 0; p < 3 && from.height[p] > 0; ++p) {
        const double alike = correlation(from, own, theirs, p);
        char text[16];
        std::snprintf(text, sizeof(text), " %.3f", alike);
        figures += text;
        good &= alike >= kAlike;
      }
    }
    std::fprintf(good ? stdout : stderr, "%-24s %4dx%-4d %-30s %s%s\n",
                 workload.id, sizes.dst.width, sizes.dst.height,
                 contender.name.c_str(), figures.c_str(),
                 good ? "" : "  NOT THE SAME WORK");
    same &= good;
  }
  return same;
}

}  // namespace bench
