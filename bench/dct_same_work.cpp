// SPDX-License-Identifier: Apache-2.0
//
// Reductions of one smooth picture by all contenders: this library's forms,
// threads and parts are equal to the byte, padding too; peers, whose filters
// differ, are near.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "bench/contender.h"
#include "bench/dct_picture.h"
#include "bench/frames.h"
#include "common/isa.h"

namespace bench {

namespace {

// Levels of 255 that the channel which differs most may be off on average; most
// are 1 off. With a pre-scale factor of 4 this library groups pairs, which is
// 4, and one peer takes chroma of 12:1 from the corners of the blocks, which
// is 8. A peer that does nothing is about a hundred off, exchanged channels
// fifty.
constexpr double kNear = 10;

}  // namespace

bool check_same_reduction(const Workload &workload, const Sizes &sizes,
                          const Contenders &contenders) {
  const size_t size = dst_room(workload, sizes);
  const Block src(src_room(workload, sizes));
  const Block expected(size), found(size);
  const Components own =
      components(describe_dst(workload, sizes, expected.data()));
  // One picture for all of a format: drawing takes longer than reducing.
  int32_t drawn = -1;
  bool same = true;
  for (const Contender &contender : contenders) {
    if (contender.kind == Contender::Kind::kBound) continue;
    Workload order = workload;
    order.dst_format = contender.dst_format;
    if (contender.src_format >= 0) order.src_format = contender.src_format;
    if (order.src_format != drawn) {
      draw_smooth(describe_src(order, sizes, src.data()));
      drawn = order.src_format;
    }
    // The first is this library's best form.
    const bool first = &contender == contenders.data();
    uint8_t *dst = first ? expected.data() : found.data();
    std::fill_n(dst, size, uint8_t{1});
    if (contender.level >= 0) lox::isa_limit(contender.level);
    contender.run(src.data(), dst);
    lox::isa_limit(lox::isa_best());
    const Components theirs = components(describe_dst(order, sizes, dst));
    double d = 0;
    for (size_t c = 0; c < 3; ++c) {
      d = std::max(d, mean_difference(own[c], theirs[c]));
    }
    const bool near = contender.kind == Contender::Kind::kOwn
                          ? std::memcmp(expected.data(), dst, size) == 0
                          : d <= kNear;
    std::fprintf(near ? stdout : stderr,
                 "%-24s %4dx%-4d %-30s mean difference %.3f%s\n", workload.id,
                 sizes.dst.width, sizes.dst.height, contender.name.c_str(), d,
                 near ? "" : "  NOT THE SAME WORK");
    same &= near;
  }
  return same;
}

}  // namespace bench
