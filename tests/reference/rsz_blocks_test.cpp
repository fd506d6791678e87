// SPDX-License-Identifier: Apache-2.0
// The block downscalers against weighted means, one output after the other.
#include <orumlox/rsz_blocks.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/image.h"

namespace lox_test {
namespace {

// What each sample of a block counts; the columns in the order of its group.
using Weights = int32_t[4][4];
constexpr Weights kTwo = {{1, 1}, {1, 1}};
constexpr Weights kFour = {
    {1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}};
constexpr Weights kEvenRows = {{1, 1, 1, 1}, {}, {1, 1, 1, 1}, {}};
constexpr Weights kLopsided = {
    {1, 2, 1, 2}, {1, 0, 1, 0}, {1, 2, 1, 2}, {1, 0, 1, 0}};

// The pairs that each output of a run of 16 takes.
constexpr int32_t kInterleaved[4][4] = {
    {0, 2, 4, 6}, {1, 3, 5, 7}, {8, 10, 12, 14}, {9, 11, 13, 15}};

// Which columns are made, and so what the last argument is.
enum class Form { kAll, kFirst, kRemain, kStrided };

struct Kernel {
  vexo_rsz_columns_kernel *kernel;
  const char *name;
  int32_t unit;  // bytes
  int32_t factor;
  Form form;
  const Weights &weights;
  // Of kernels whose pairs are interleaved: the weights of a last run.
  const Weights *last_run = nullptr;

  // `last` is the last argument: columns or a stride, in bytes.
  void model(const uint8_t *src, uint8_t *dst, int32_t width, int32_t height,
             int32_t last) const {
    const int32_t begin = form == Form::kRemain ? last / unit : 0;
    const int32_t end = (form == Form::kFirst ? last : width) / unit;
    const int32_t dst_stride = form == Form::kStrided ? last : width;
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = begin; x < end; ++x) {
        const int32_t run = begin + (x - begin) / 4 * 4;
        const bool whole_run = last_run != nullptr && run + 4 <= end;
        const Weights &w =
            last_run == nullptr || whole_run ? weights : *last_run;
        int32_t sum[2] = {};
        int32_t total = 0;
        for (int32_t n = 0; n < factor * factor; ++n) {
          const int32_t row = n / factor;
          const int32_t i = n % factor;
          const int32_t column =
              whole_run ? 4 * run + kInterleaved[x - run][i] : factor * x + i;
          const int32_t in =
              (factor * y + row) * factor * width + column * unit;
          for (int32_t c = 0; c < unit; ++c) sum[c] += w[row][i] * src[in + c];
          total += w[row][i];
        }
        for (int32_t c = 0; c < unit; ++c) {
          dst[y * dst_stride + x * unit + c] =
              static_cast<uint8_t>(sum[c] / total);
        }
      }
    }
  }

  // Last arguments to try. Where a column in the middle of a run would be the
  // last, the rule leaves open whether the run is whole: not tried.
  std::vector<int32_t> last_arguments(int32_t width) const {
    std::vector<int32_t> lasts = {width};
    if (form == Form::kStrided) lasts = {width, width + 1, width + 38};
    if (form == Form::kFirst || form == Form::kRemain) {
      const bool any = form == Form::kRemain || last_run == nullptr;
      for (int32_t n = 0; n < width; n += 8) lasts.push_back(n);
      for (int32_t n = unit; any && n < width; n += 14) lasts.push_back(n);
    }
    return lasts;
  }

  size_t src_size(int32_t width, int32_t height) const {
    return plane_size(factor * width, factor * height, factor * width);
  }
  size_t dst_size(int32_t width, int32_t height, int32_t last) const {
    return plane_size(width, height, form == Form::kStrided ? last : width);
  }
};

class RszBlocks : public SeededTest,
                  public testing::WithParamInterface<Kernel> {};

TEST_P(RszBlocks, AverageAndKeepTheRest) {
  const Kernel &k = GetParam();
  GuardedBuffer src;
  GuardedBuffer dst;
  std::vector<int32_t> widths = {127, 255, 514};
  for (int32_t w = -1; w <= 80; ++w) widths.push_back(w);
  for (const int32_t width : widths) {
    for (int32_t height = -1; height <= 3; ++height) {
      for (const int32_t last : k.last_arguments(width)) {
        for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
          src.reset(k.src_size(width, height), edge);
          dst.reset(k.dst_size(width, height, last), edge);
          const bool high = height == 1 && edge == Edge::kStart;
          random.fill(src.data(), src.size(),
                      high ? Fill::kHigh : Fill::kRandom);
          std::vector<uint8_t> expected = dst.copy();
          k.model(src.data(), expected.data(), width, height, last);
          k.kernel(src.data(), dst.data(), width, height, last);
          ASSERT_TRUE(holds(dst, expected))
              << width << "x" << height << ", last argument " << last;
        }
      }
    }
  }
}

// The destination at the source, before it or anywhere inside.
TEST_P(RszBlocks, WriteOneOutputAfterTheOther) {
  const Kernel &k = GetParam();
  GuardedBuffer both;
  for (int n = 0; n < 3000; ++n) {
    // An output of pairs lies where pairs of the source do: whether a pair is
    // one output or two makes no difference.
    const int32_t width = random.between(1, 200 / k.unit) * k.unit;
    const int32_t height = random.between(1, 3);
    const std::vector<int32_t> lasts = k.last_arguments(width);
    const int32_t last =
        lasts[random.between(0, static_cast<int32_t>(lasts.size()) - 1)] /
        k.unit * k.unit;
    const auto src_size = static_cast<int32_t>(k.src_size(width, height));
    const auto dst_size = static_cast<int32_t>(k.dst_size(width, height, last));
    const int32_t offset =
        (n % 3 == 0   ? 0
         : n % 3 == 1 ? random.between(-std::min(dst_size, 80), 80)
                      : random.between(0, src_size)) /
        k.unit * k.unit;
    const int32_t begin = std::max(0, -offset);
    both.reset(std::max(begin + src_size, begin + offset + dst_size));
    random.fill(both.data(), both.size());
    std::vector<uint8_t> expected = both.copy();
    k.model(expected.data() + begin, expected.data() + begin + offset, width,
            height, last);
    k.kernel(both.data() + begin, both.data() + begin + offset, width, height,
             last);
    ASSERT_TRUE(holds(both, expected))
        << width << "x" << height << ", last argument " << last
        << ", destination at source + " << offset;
  }
}

#define WHOLE(name)                                                   \
  [](const uint8_t *src, uint8_t *dst, int32_t width, int32_t height, \
     int32_t) { vexo_##name(src, dst, width, height); },              \
      #name
#define NAMED(name) vexo_##name, #name
constexpr Kernel kKernels[] = {
    {WHOLE(8b_rsz_down_2x2), 1, 2, Form::kAll, kTwo},
    {WHOLE(8b8b_rsz_down_2x2), 2, 2, Form::kAll, kTwo},
    {WHOLE(8b_rsz_down_4x4), 1, 4, Form::kAll, kEvenRows},
    {WHOLE(8b8b_rsz_down_4x4), 2, 4, Form::kAll, kEvenRows, &kEvenRows},
    {NAMED(8b_rsz_down_2x2_non_alignment), 1, 2, Form::kFirst, kTwo},
    {NAMED(8b_rsz_down_2x2_non_alignment_remain), 1, 2, Form::kRemain, kTwo},
    {NAMED(8b8b_rsz_down_2x2_non_alignment), 2, 2, Form::kFirst, kTwo},
    {NAMED(8b8b_rsz_down_2x2_non_alignment_remain), 2, 2, Form::kRemain, kTwo},
    {NAMED(8b_rsz_down_4x4_non_alignment), 1, 4, Form::kFirst, kFour},
    {NAMED(8b_rsz_down_4x4_non_alignment_remain), 1, 4, Form::kRemain, kFour},
    {NAMED(8b8b_rsz_down_4x4_non_alignment), 2, 4, Form::kFirst, kLopsided,
     &kFour},
    {NAMED(8b8b_rsz_down_4x4_non_alignment_remain), 2, 4, Form::kRemain,
     kLopsided, &kFour},
    {NAMED(8b_rsz_down_2x2_non_dct), 1, 2, Form::kStrided, kTwo},
    {NAMED(8b8b_rsz_down_2x2_non_dct), 2, 2, Form::kStrided, kTwo},
    {NAMED(8b_rsz_down_4x4_non_dct), 1, 4, Form::kStrided, kFour},
    {NAMED(8b8b_rsz_down_4x4_non_dct), 2, 4, Form::kStrided, kFour}};
INSTANTIATE_TEST_SUITE_P(, RszBlocks, testing::ValuesIn(kKernels),
                         [](const auto &i) { return i.param.name; });

}  // namespace
}  // namespace lox_test
