// SPDX-License-Identifier: Apache-2.0
// The block downscalers: weighted means, one output after the other.
#include <orumlox/rsz_blocks.h>

#include <algorithm>
#include <string_view>

#include "rules/rules.h"

namespace lox_test {
namespace {

// What each sample of a block counts; the columns in the order of its group.
using Weights = int32_t[4][4];
constexpr Weights kAll = {
    {1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}};
constexpr Weights kEvenRows = {{1, 1, 1, 1}, {}, {1, 1, 1, 1}, {}};
constexpr Weights kLopsided = {
    {1, 2, 1, 2}, {1, 0, 1, 0}, {1, 2, 1, 2}, {1, 0, 1, 0}};

// The pairs that each output of a run of 16 takes.
constexpr int64_t kGrouped[4][4] = {
    {0, 2, 4, 6}, {1, 3, 5, 7}, {8, 10, 12, 14}, {9, 11, 13, 15}};

// `last` is the last argument: columns or a stride, in bytes.
void any(const Function &function, const uint8_t *src, uint8_t *dst,
         int32_t width, int32_t height, int32_t last) {
  const std::string_view name = function.name;
  const auto has = [&](const char *word) {
    return name.find(word) != std::string_view::npos;
  };
  const int unit = has("8b8b") ? 2 : 1;
  const int factor = has("2x2") ? 2 : 4;
  const bool strided = has("non_dct");
  const bool some = has("non_alignment");
  const bool grouped = unit == 2 && factor == 4 && !strided;
  const int64_t step = strided ? last : width;
  const int64_t columns = std::clamp(last, 0, std::max(width, 0)) / unit;
  const int64_t begin = has("remain") ? columns : 0;
  const int64_t end = some && !has("remain") ? columns : width / unit;
  for (int64_t y = 0; y < height && width > 0; ++y) {
    for (int64_t x = begin; x < end; ++x) {
      // Of pairs a last run of fewer than four outputs takes neighbours.
      const int64_t run = begin + (x - begin) / 4 * 4;
      const bool in_run = grouped && run + 4 <= end;
      const Weights &weights = factor == 4 && !strided && !some ? kEvenRows
                               : in_run                         ? kLopsided
                                                                : kAll;
      for (int c = 0; c < unit; ++c) {
        int32_t sum = 0;
        int32_t total = 0;
        for (int n = 0; n < factor * factor; ++n) {
          const int row = n / factor;
          const int i = n % factor;
          const int64_t column =
              in_run ? 4 * run + kGrouped[x - run][i] : factor * x + i;
          sum += weights[row][i] *
                 src[(factor * y + row) * factor * width + column * unit + c];
          total += weights[row][i];
        }
        dst[y * step + x * unit + c] = static_cast<uint8_t>(sum / total);
      }
    }
  }
}
void dense(const Function &function, const uint8_t *src, uint8_t *dst,
           int32_t width, int32_t height) {
  any(function, src, dst, width, height, width);
}

}  // namespace

std::vector<Rule> blocks_rules() {
  return {
#define KERNEL(name) rule_for(name, any),
#include "vexo_rsz_columns_kernel.inc"
#include "vexo_rsz_strided_block_kernel.inc"
#undef KERNEL
#define KERNEL(name) rule_for(name, dense),
#include "vexo_rsz_block_kernel.inc"
  };
}

}  // namespace lox_test
