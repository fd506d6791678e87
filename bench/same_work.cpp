// SPDX-License-Identifier: Apache-2.0
//
// A comparison of times means something only when the same picture comes out.
// The forms of this library are equal to the byte, padding too; peers are as
// near as their tolerance says.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>

#include "common/isa.h"
#include "contender.h"

namespace bench {
namespace {

bool filters_differ(Task task) {
  return task == kSharpen || task == kDeblock || task == kToneMap;
}

double mean_difference(const Channel &a, const Channel &b) {
  int64_t sum = 0;
  for (int32_t y = 0; y < a.height; ++y) {
    for (int32_t x = 0; x < a.width; ++x) {
      sum += std::abs(a.level(x, y) - b.level(x, y));
    }
  }
  return static_cast<double>(sum) / a.width / a.height;
}

// Of what two outputs change of the source, or without one of the outputs: 1
// where one goes up as the other does, 0 where they have nothing to do with
// each other or one does nothing.
double correlation(const Channel *src, const Channel &a, const Channel &b) {
  // The borders of a picture are everybody's own.
  constexpr int32_t kMargin = 8;
  double n = 0, sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;
  for (int32_t y = kMargin; y < a.height - kMargin; ++y) {
    for (int32_t x = kMargin; x < a.width - kMargin; ++x) {
      const int32_t before = src ? src->level(x, y) : 0;
      const double p = a.level(x, y) - before, q = b.level(x, y) - before;
      n += 1;
      sa += p;
      sb += q;
      saa += p * p;
      sbb += q * q;
      sab += p * q;
    }
  }
  const double spread = (n * saa - sa * sa) * (n * sbb - sb * sb);
  return spread > 0 ? (n * sab - sa * sb) / std::sqrt(spread) : 0;
}

// In the terms of a contender's tolerance; that of the channel which differs
// most.
double distance(const Workload &job, const vexo_img &src, const vexo_img &own,
                const vexo_img &theirs) {
  const std::vector<Channel> from = channels(src), a = channels(own),
                             b = channels(theirs);
  // Channels that are of another kind than the source's have not changed them.
  const bool rgb = job.dst_format >= VEXO_FMT_RGB565;
  double largest = 0;
  for (size_t c = 0; c < a.size(); ++c) {
    largest = std::max(
        largest, filters_differ(job.task)
                     ? 1 - correlation(rgb ? nullptr : &from[c], a[c], b[c])
                     : mean_difference(a[c], b[c]));
  }
  return largest;
}

class Check {
 public:
  Check(const Job &job, bool with_key)
      : job_(job),
        with_key_(with_key),
        size_(job.dst_room()),
        expected_(size_),
        found_(size_) {}

  bool run(const Contenders &contenders) {
    bool same = true;
    const int level = lox::isa_level();
    // The first is this library's form of the run.
    for (const Contender &contender : contenders) {
      if (contender.tolerance == kAny) continue;
      const bool first = &contender == contenders.data();
      uint8_t *dst = (first ? expected_ : found_).data();
      uint8_t *src = source(contender.src_format);
      std::fill_n(dst, size_, uint8_t{1});
      lox::isa_limit(contender.level >= 0 ? contender.level : level);
      if (job_.task == kDeblock && contender.is_own()) {
        // In place, and there the result is looked for.
        std::memcpy(dst, src, frame_bytes(job_.dst(dst)));
        src = dst;
      }
      contender.make(true)(src, dst);
      lox::isa_limit(level);
      same &= first ? is_what_it_must_be() : compare(contender);
    }
    return same;
  }

 private:
  // One picture for all of a format.
  uint8_t *source(int32_t format) {
    std::unique_ptr<Block> &src = sources_[format];
    if (!src) {
      src = std::make_unique<Block>(
          std::max(job_.src_room(), frame_bytes(job_.src(nullptr, format))));
      job_.fill_src(src->data(), format, with_key_);
    }
    return src->data();
  }

  // What can be told without another implementation: where samples only move,
  // tiles among them, the result is the picture drawn; of a scan it is whether
  // there is a key frame.
  bool is_what_it_must_be() {
    bool good = true;
    if (job_.task == kFindKey) {
      good = expected_.data()[0] == (with_key_ ? 1 : 0);
    } else if (job_.is_layout()) {
      draw(job_.picture(), job_.dst(found_.data()));
      good = std::memcmp(expected_.data(), found_.data(),
                         frame_bytes(job_.dst(nullptr))) == 0;
    }
    if (!good) std::fprintf(stderr, "%s: wrong result\n", job_.id);
    return good;
  }

  bool compare(const Contender &contender) {
    const bool exact = contender.is_own() || job_.is_media();
    const double d =
        exact ? std::memcmp(expected_.data(), found_.data(), size_) != 0
              : distance(job_, job_.src(source(-1)), job_.dst(expected_.data()),
                         job_.dst(found_.data(), contender.dst_format));
    const bool good = d <= (exact ? 0 : contender.tolerance);
    char figures[32];
    std::snprintf(figures, sizeof(figures), "%.3f of %.1f", d,
                  contender.tolerance);
    std::fprintf(good ? stdout : stderr, "%-24s %4dx%-4d %-30s %s%s\n", job_.id,
                 job_.sizes.dst.width, job_.sizes.dst.height,
                 contender.name.c_str(),
                 exact ? good ? "equal" : "not equal" : figures,
                 good ? "" : "  NOT THE SAME WORK");
    return good;
  }

  const Job &job_;
  bool with_key_;
  size_t size_;
  Block expected_, found_;
  std::map<int32_t, std::unique_ptr<Block>> sources_;
};

}  // namespace

bool check_same_work(const Job &job, const Contenders &contenders) {
  bool same = Check(job, false).run(contenders);
  if (job.task == kFindKey) same &= Check(job, true).run(contenders);
  return same;
}

}  // namespace bench
