// SPDX-License-Identifier: Apache-2.0
//
// Peers' curves differ from this library's on purpose, so that no picture of
// theirs is near its own. Still a channel is high where the other's is: that is
// what is looked at here, and that luma is no longer the source's. The forms of
// this library are equal to the byte.
#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "bench/frames.h"
#include "bench/hdr_contender.h"
#include "common/isa.h"

namespace bench {

namespace {

constexpr Size kSize = {1920, 1080};

// Of colours and luma the peers have 0.92 and more, of chroma 0.85; a peer that
// clips highlights loses most. Exchanged channels are below 0.6.
constexpr double kAlike = 0.88;
constexpr double kAlikeChroma = 0.8;
// Levels of 255 that luma differs by from the high bits of the source's: 13 and
// more, 22 of this library.
constexpr double kChanged = 5;

// Of the samples at the same places: 1 where one goes up as the other does, 0
// where they have nothing to do with each other.
double correlation(const Channel &a, const Channel &b) {
  if (a.width != b.width || a.height != b.height) return 0;
  double n = 0, sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;
  for (int32_t y = 0; y < a.height; ++y) {
    for (int32_t x = 0; x < a.width; ++x) {
      const double p = a.first[a.stride * y + a.step * x];
      const double q = b.first[b.stride * y + b.step * x];
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

// The code of a luma sample, of 10 bits.
int code_at(const vexo_img &src, int32_t x, int32_t y) {
  const uint8_t *p =
      src.plane[0] + ptrdiff_t{src.stride[0]} * y + ptrdiff_t{2} * x;
  const int word = p[0] | p[1] << 8;
  return src.format == VEXO_FMT_P010LE ? word >> 6 : word;
}

double distance_from_source(const vexo_img &src, const Channel &luma) {
  double sum = 0;
  for (int32_t y = 0; y < luma.height; ++y) {
    for (int32_t x = 0; x < luma.width; ++x) {
      sum += std::abs(luma.first[luma.stride * y + luma.step * x] -
                      (code_at(src, x, y) >> 2));
    }
  }
  return sum / luma.width / luma.height;
}

bool has_every_code(const vexo_img &src) {
  std::bitset<1024> seen;
  for (int32_t y = 0; y < src.height[0]; ++y) {
    for (int32_t x = 0; x < src.width[0]; ++x) {
      seen.set(static_cast<size_t>(code_at(src, x, y)));
    }
  }
  if (seen.count() == 940 - 64 + 1 && seen[64] && seen[940]) return true;
  std::fprintf(stderr, "the HDR picture lacks codes\n");
  return false;
}

// Returns whether the figures suffice, and says what they are.
bool does_the_work(const vexo_img &src, bool rgb, const Channels &own,
                   const Channels &peer, std::string *figures) {
  bool good = true;
  *figures = "correlation";
  const auto add = [&](double value, const char *format) {
    char text[16];
    std::snprintf(text, sizeof(text), format, value);
    *figures += text;
  };
  for (size_t c = 0; c < 3; ++c) {
    const double alike = correlation(own[c], peer[c]);
    add(alike, " %.3f");
    good &= alike >= (rgb || c == 0 ? kAlike : kAlikeChroma);
  }
  if (rgb) return good;
  const double changed = distance_from_source(src, peer[0]);
  *figures += ", luma differs from the source's by";
  add(changed, " %.1f");
  return good && changed >= kChanged;
}

// The picture in one of the formats that are read.
class Picture {
 public:
  explicit Picture(int32_t format)
      : block_(frame_bytes(describe(format, kSize, nullptr))),
        img_(describe(format, kSize, block_.data())) {
    draw_hdr(img_);
  }
  const vexo_img &img() const { return img_; }

 private:
  Block block_;
  vexo_img img_;
};

bool check(const ToneMapping &mapping, const Picture &pairs,
           const Picture &planes) {
  const size_t bytes = tone_mapped_bytes(kSize);
  const Block expected(bytes), found(bytes);
  std::unique_ptr<ToneMapper> own;
  bool same = true;
  // The first is this library's best form, what the others are held to.
  for (const HdrContender &contender :
       tone_mapping_contenders(mapping, kSize)) {
    const vexo_img &src =
        (contender.src_format == VEXO_FMT_P010LE ? pairs : planes).img();
    uint8_t *dst = own ? found.data() : expected.data();
    std::fill_n(dst, bytes, uint8_t{1});
    lox::isa_limit(contender.level);
    std::unique_ptr<ToneMapper> mapper = contender.prepare();
    bool good = mapper && mapper->run(src, dst);
    lox::isa_limit(lox::isa_best());
    std::string figures = "no picture";
    if (good && contender.is_own) {
      good = std::memcmp(dst, expected.data(), bytes) == 0;
      figures = good ? "equal" : "not equal";
    } else if (good) {
      good = does_the_work(src, mapping.dst_format == VEXO_FMT_RGBA8888,
                           own->channels(expected.data()),
                           mapper->channels(dst), &figures);
    }
    std::fprintf(good ? stdout : stderr, "%-24s %4dx%-4d %-30s %s%s\n",
                 mapping.id, kSize.width, kSize.height, contender.name.c_str(),
                 figures.c_str(), good ? "" : "  NOT THE SAME WORK");
    same &= good;
    if (!own) own = std::move(mapper);
  }
  return same;
}

}  // namespace

bool check_tone_mapping() {
  const Picture pairs(VEXO_FMT_P010LE), planes(VEXO_FMT_YUV420PLANAR16);
  bool same = has_every_code(pairs.img()) && has_every_code(planes.img());
  for (const ToneMapping &mapping : kToneMappings) {
    same &= check(mapping, pairs, planes);
  }
  return same;
}

}  // namespace bench
