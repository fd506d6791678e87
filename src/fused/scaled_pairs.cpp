// SPDX-License-Identifier: Apache-2.0
//
// Pictures of 4:2:0 as rows in pairs, each pair with a row of chroma. What is
// worked out about columns is what rsz/scale_columns.h works out, but for
// registers that conversions begin with.
#include "fused/scaled_pairs.h"

#include <cstddef>

#include "common/caches.h"
#include "common/divisor.h"
#include "csc/yuv_to_rgb.h"
#include "fused/pair_rows.h"
#include "rsz/layout.h"

namespace lox {

namespace {

constexpr int kLanes = 4;
constexpr int kBytes = 64;

// The pixel of a vector that element `e` of a lane is.
int pixel_at(Order order, int half, int lane, int e) {
  switch (order) {
    case Order::kBytes:
      return 16 * lane + 8 * half + e;
    case Order::kWords:
      return 32 * half + 8 * lane + e;
    default:
      return 32 * half + 4 * lane + (e < 4 ? e : 12 + e);
  }
}

// Two samples of which a value is the mean.
struct Two {
  int32_t first, second;
};
Two two_of(Walk *walk) {
  const Step step = walk->next();
  return {step.at, step.part == 0 ? step.at : step.at + 1};
}

// By lane and element, in source bytes.
struct Register {
  Two at[kLanes][8];
};

// Of samples in a row of so many bytes. Whether their windows reach them.
bool spread(const Register &wanted, int64_t row_bytes,
            PairColumns::Spread *spread, int32_t *from) {
  int64_t base = row_bytes - kBytes;
  for (const auto &lane : wanted.at) {
    for (const Two two : lane) base = two.first < base ? two.first : base;
  }
  *from = static_cast<int32_t>(base);
  for (int i = 0; i < 2 * kLanes; ++i) {
    const Two *const run = &wanted.at[i / 2][ptrdiff_t{i % 2} * 4];
    constexpr int kWindow = 8;
    int64_t window = kBytes - kWindow;
    for (int e = 0; e < 4; ++e) {
      const int64_t at = run[e].first - base;
      window = at < window ? at : window;
    }
    window &= ~int64_t{1};
    const int64_t start = i % 2 == 0 ? 0 : kWindow;  // in the lane
    for (int e = 0; e < 4; ++e) {
      const int64_t first = run[e].first - base - window;
      const int64_t second = run[e].second - base - window;
      if (first >= kWindow || second >= kWindow) return false;
      const int to = i * kWindow + 2 * e;
      spread->words[to] = static_cast<uint8_t>(window / 2 + e);
      spread->words[to + 1] = 0;
      spread->bytes[to] = static_cast<uint8_t>(start + first);
      spread->bytes[to + 1] = static_cast<uint8_t>(start + second);
    }
  }
  return true;
}

// Vectors after which the columns of a direction repeat.
int64_t period_of(const Axis &axis, int in_vector) {
  const int64_t outputs = axis.dst / common_divisor(axis.src, axis.dst);
  return outputs / common_divisor(outputs, in_vector);
}

// Whether what is between two samples is their mean, and whether windows may
// reach it.
bool has_even_weights(const Axis &axis) {
  return axis.dst <= 2 * int64_t{axis.src};
}
bool is_in_reach(const Axis &axis) {
  return has_even_weights(axis) && axis.src <= 2 * int64_t{axis.dst};
}

bool is_by_two(const Axis &axis) {
  return axis.dst == 2 * int64_t{axis.src} || axis.src == 2 * int64_t{axis.dst};
}

class ColumnsFiller {
 public:
  ColumnsFiller(const Axis &luma, const Axis &chroma, Order order, int u_place,
                PairColumns *columns)
      : luma_(luma),
        chroma_(chroma),
        order_(order),
        u_place_(u_place),
        columns_(*columns) {}

  bool fill() {
    const int32_t width = luma_.dst;
    columns_.count = (width - 1) / kBytes + 1;
    columns_.overlaps = width % kBytes != 0;
    if (columns_.count > PairColumns::kVectors) return false;
    const int64_t of_luma = period_of(luma_, kBytes);
    const int64_t of_chroma = period_of(chroma_, kBytes / 2);
    const int64_t period =
        of_luma / common_divisor(of_luma, of_chroma) * of_chroma;
    int tables = 0;
    for (int32_t i = 0; i < columns_.count; ++i) {
      PairColumns::Vector &at = columns_.vectors[i];
      at.x = i + 1 < columns_.count ? i * kBytes : width - kBytes;
      if (i >= period && at.x == i * kBytes &&
          repeat(columns_.vectors[i - period], period, &at)) {
        continue;
      }
      if (tables == PairColumns::kTables) return false;
      at.table = tables++;
      if (!vector(&at)) return false;
    }
    return true;
  }

 private:
  // The same some source bytes further, if the row has as many.
  bool repeat(const PairColumns::Vector &before, int64_t vectors,
              PairColumns::Vector *at) const {
    const auto advance = [vectors](const Axis &axis, int in_vector) {
      return static_cast<int32_t>(vectors * in_vector * axis.src / axis.dst);
    };
    const int32_t luma = advance(luma_, kBytes);
    const int32_t chroma = advance(chroma_, kBytes / 2);
    at->table = before.table;
    for (int half = 0; half < 2; ++half) {
      at->luma[half] = before.luma[half] + luma;
      at->chroma[half] = before.chroma[half] + chroma;
      if (at->luma[half] > luma_.src - kBytes ||
          at->chroma[half] > chroma_.src - kBytes / 2) {
        return false;
      }
    }
    return true;
  }
  bool vector(PairColumns::Vector *at) const {
    Two luma[kBytes];
    Walk luma_walk(luma_, at->x);
    for (Two &two : luma) two = two_of(&luma_walk);
    Two pairs[kBytes / 2];
    Walk chroma_walk(chroma_, at->x / 2);
    for (Two &two : pairs) two = two_of(&chroma_walk);
    PairColumns::Table &table = columns_.tables[at->table];
    for (int half = 0; half < 2; ++half) {
      Register y;
      Register uv;
      for (int lane = 0; lane < kLanes; ++lane) {
        for (int e = 0; e < 8; ++e) {
          y.at[lane][e] = luma[pixel_at(order_, half, lane, e)];
          const Two pair = pairs[pixel_at(order_, half, lane, e & ~1) / 2];
          const int place = (e & 1) ^ u_place_;
          uv.at[lane][e] = {2 * pair.first + place, 2 * pair.second + place};
        }
      }
      int32_t bytes = 0;
      if (!spread(y, luma_.src, &table.luma[half], &at->luma[half]) ||
          !spread(uv, 2 * int64_t{chroma_.src}, &table.chroma[half], &bytes)) {
        return false;
      }
      at->chroma[half] = bytes / 2;
    }
    return true;
  }

  Axis luma_, chroma_;
  Order order_;
  int u_place_;
  PairColumns &columns_;
};

// The rows that a plane's outputs are made of, from the top on.
class SourceRows {
 public:
  SourceRows(const ScaleJob &job, const uint8_t *second_plane,
             int64_t second_step)
      : plane_{job.src, second_plane},
        step_{job.src_step, second_step},
        walk_(job.down, 0) {}

  void next(TwoRows *rows) {
    const Two two = two_of(&walk_);
    rows->blended = two.first != two.second;
    end_ = two.second + 1;
    for (int p = 0; p < 2; ++p) {
      rows->row[0][p] = row(p, two.first);
      rows->row[1][p] = row(p, two.second);
    }
  }
  // Behind the last one that was asked for.
  int32_t end() const { return end_; }
  const uint8_t *row(int p, int32_t y) const {
    return plane_[p] == nullptr ? nullptr : plane_[p] + step_[p] * y;
  }

 private:
  const uint8_t *plane_[2];
  int64_t step_[2];
  Walk walk_;
  int32_t end_ = 0;
};

// How a picture is scaled and converted, as far as rows do not change it.
struct Plan {
  ScaleJob luma, chroma;
  // Whether chroma is in planes, and which one its second samples are in then.
  bool planes;
  int second;
  RgbLayout layout;
  bool stream, fetches;
};

// Pairs of rows from the top on.
class PairsOfRows {
 public:
  PairsOfRows(const Plan &plan, const vexo_img &src, const vexo_img &dst)
      : plan_(plan),
        dst_(dst),
        height_(plan.luma.down.dst),
        luma_(plan.luma, nullptr, 0),
        chroma_(plan.chroma, plan.planes ? src.plane[plan.second] : nullptr,
                src.stride[plan.second]) {
    find(&pairs_[0]);
  }
  // The next one, with the rows that are fetched for the one after it.
  const PairRows &next() {
    PairRows &pair = pairs_[row_ / 2 % 2];
    row_ += 2;
    if (row_ >= height_) return pair;
    const int32_t luma_end = luma_.end();
    const int32_t chroma_end = chroma_.end();
    find(&pairs_[row_ / 2 % 2]);
    if (plan_.fetches) {
      fetch(luma_, luma_end, &pair);
      pair.ahead_luma = pair.ahead_count;
      fetch(chroma_, chroma_end, &pair);
    }
    return pair;
  }

 private:
  // The pair at row_.
  void find(PairRows *pair) {
    pair->mean = plan_.luma.at_once ? Mean::kOfFour : Mean::kOfTwo;
    pair->planes = plan_.planes;
    pair->stream = plan_.stream;
    pair->ahead_luma = pair->ahead_count = 0;
    for (int i = 0; i < 2; ++i) {
      luma_.next(&pair->luma[i]);
      pair->rgb[i] = dst_.plane[0] + int64_t{dst_.stride[0]} * (row_ + i);
    }
    chroma_.next(&pair->chroma);
  }
  // Adds rows from `begin` on to those that are fetched.
  static void fetch(const SourceRows &source, int32_t begin, PairRows *pair) {
    constexpr int kMost =
        static_cast<int>(sizeof(pair->ahead) / sizeof(pair->ahead[0]));
    for (int32_t y = begin; y < source.end(); ++y) {
      for (int p = 0; p < 2; ++p) {
        const uint8_t *const row = source.row(p, y);
        if (row != nullptr && pair->ahead_count < kMost) {
          pair->ahead[pair->ahead_count++] = row;
        }
      }
    }
  }

  const Plan &plan_;
  const vexo_img &dst_;
  int32_t height_, row_ = 0;
  SourceRows luma_, chroma_;
  PairRows pairs_[2] = {};
};

// Whether there are kernels for the route and the sizes. Odd sizes have rules
// of their own, and of less than a vector there is none.
bool takes(const vexo_img &src, const vexo_img &middle, const Route &route) {
  static_assert(kYuv420 < kNv21 && kYv12 < kNv21 && kNv12 < kNv21);
  if (route.driver != yuv_to_rgb || route.from > kNv21 ||
      route.to >= kRgbLayouts || pair_rows().convert[route.to] == nullptr) {
    return false;
  }
  if (middle.width[0] % 2 != 0 || middle.height[0] % 2 != 0 ||
      middle.width[0] < kBytes || src.width[0] < kBytes ||
      src.width[1] < kBytes / 2) {
    return false;
  }
  return route.from >= kNv12 ||
         (src.width[2] == src.width[1] && src.height[2] == src.height[1]);
}

Plan make_plan(const vexo_img &src, const vexo_img &middle, const Route &route,
               const vexo_img &dst) {
  const bool planes = route.from < kNv12;
  const int first = route.from == kYv12 ? 2 : 1;
  const auto job_of = [&](int p) {
    return make_job(planes || p == 0 ? k8b : k8b8b, Turn::kNone,
                    plane_of(src, middle, p), dst.mode, nullptr);
  };
  const auto layout = static_cast<RgbLayout>(route.to);
  const KernelArgs args = {middle.plane,  middle.width, middle.height,
                           middle.stride, dst.stride,   dst.plane,
                           kAllRows};
  const bool stream = writing_of(layout, args).stream;
  const uint64_t pixels = static_cast<uint64_t>(src.width[0]) *
                          static_cast<uint64_t>(src.height[0]);
  return {job_of(0),
          job_of(first),
          planes,
          3 - first,
          layout,
          stream,
          pixels >= memory_now().far_from};
}

// Whether what is worked out about columns reaches the ratios, and is worth it:
// what halves and doubles rows looks nothing up. A strip costs less than
// looking up does then, unless stores past the caches wait for memory anyway.
bool suits(const Plan &plan) {
  const ScaleJob &luma = plan.luma;
  const ScaleJob &chroma = plan.chroma;
  return is_in_reach(luma.across) && has_even_weights(luma.down) &&
         is_in_reach(chroma.across) && has_even_weights(chroma.down) &&
         luma.at_once == chroma.at_once &&
         (plan.stream || !is_by_two(luma.across));
}

}  // namespace

bool convert_scaled_pairs(const vexo_img &src, const vexo_img &middle,
                          const Route &route, const vexo_img &dst) {
  if (!takes(src, middle, route)) return false;
  const Plan plan = make_plan(src, middle, route, dst);
  PairColumns columns;
  if (!suits(plan) || !ColumnsFiller(plan.luma.across, plan.chroma.across,
                                     order_of(kPixelFormats[plan.layout]),
                                     route.from == kNv21, &columns)
                           .fill()) {
    return false;
  }
  PairsOfRows pairs(plan, src, dst);
  const auto convert = pair_rows().convert[plan.layout];
  for (int32_t y = 0; y < middle.height[0]; y += 2) {
    convert(pairs.next(), columns);
  }
  if (plan.stream) yuv_to_rgb_rows().end_stream();
  return true;
}

}  // namespace lox
