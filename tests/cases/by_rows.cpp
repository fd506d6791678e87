// SPDX-License-Identifier: Apache-2.0
#include "cases/by_rows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

namespace lox_test {
namespace {

using Bytes = std::vector<uint8_t>;
using Range = std::pair<int32_t, int32_t>;

void require(bool holds, const char *what, Range range) {
  if (holds) return;
  std::fprintf(stderr, "rows %d to %d: %s\n", range.first, range.second, what);
  std::abort();
}

// Formats of which two rows share one of chroma.
bool in_pairs(int32_t format) {
  constexpr int32_t kFormats[] = {
      VEXO_FMT_YUV420,  VEXO_FMT_YV12,   VEXO_FMT_NV12,  VEXO_FMT_NV21,
      VEXO_FMT_YUV422W, VEXO_FMT_T64X32, VEXO_FMT_P010LE};
  return std::count(std::begin(kFormats), std::end(kFormats), format) != 0;
}

// Whether byte `at` of a plane lies in the range. Tiles, rows upwards, odd
// strides, which may be rounded, and chroma of unusual sizes are not looked at.
bool is_inside(const vexo_img &img, int p, int64_t at, int32_t height,
               int32_t format, Range range) {
  const bool usual =
      p == 0 || (in_pairs(format) && img.height[p] == half_up(height));
  const int32_t stride = img.stride[p];
  if (format == VEXO_FMT_T64X32 || stride < 1 || stride % 2 != 0 || !usual) {
    return true;
  }
  const int64_t row =
      std::min(at / stride * (p == 0 ? 1 : 2), int64_t{height} - 1);
  return row >= range.first && row < range.second;
}

std::vector<Range> partition(int32_t height, int32_t step, Random &random) {
  std::vector<int32_t> bounds = {0, height};
  for (int32_t i = height < 1 ? 0 : random.between(0, 3); i > 0; --i) {
    bounds.push_back(random.between(0, height / step) * step);
  }
  std::sort(bounds.begin(), bounds.end());
  std::vector<Range> ranges;
  for (size_t i = 1; i < bounds.size(); ++i) {
    const auto place = random.between(0, static_cast<int32_t>(i) - 1);
    ranges.insert(ranges.begin() + place, {bounds[i - 1], bounds[i]});
  }
  return ranges;
}

}  // namespace

int32_t by_rows(Picture *dst, int32_t height, int32_t format,
                const RowCall &call) {
  height = std::max(height, 0);
  const Bytes before = dst->content();
  Bytes other = before;
  for (uint8_t &byte : other) byte = static_cast<uint8_t>(~byte);
  Sink seed;
  seed.add(static_cast<uint64_t>(height));
  seed.add(before.data(), before.size());
  Random random(seed.digest());

  const int32_t step = in_pairs(format) ? 2 : 1;
  std::vector<Range> refused = {
      {-1, height}, {0, height + 1}, {1, 0}, {INT32_MIN, INT32_MAX}};
  if (step == 2 && height > 2) refused.insert(refused.end(), {{1, 2}, {2, 3}});
  if (height == 3) refused.pop_back();
  for (const Range &range : refused) {
    require(call(range.first, range.second) == VEXO_ERR_ARG &&
                dst->content() == before,
            "not refused", range);
  }

  Bytes result = before;
  std::vector<bool> written(before.size());
  int32_t answer = INT32_MAX;
  for (const Range &range : partition(height, step, random)) {
    dst->set_content(other);
    call(range.first, range.second);
    const Bytes over_other = dst->content();
    dst->set_content(before);
    const int32_t status = call(range.first, range.second);
    require(answer == INT32_MAX || status == answer, "another answer", range);
    answer = status;
    const Bytes over_before = dst->content();
    size_t i = 0;
    for (int p = 0; p < 4; ++p) {
      for (int64_t at = 0; at < dst->bytes(p); ++at, ++i) {
        if (over_before[i] == before[i] && over_other[i] == other[i]) continue;
        require(!written[i], "written twice", range);
        require(is_inside(dst->img, p, at, height, format, range),
                "written outside", range);
        written[i] = true;
        result[i] = over_before[i];
      }
    }
  }
  dst->set_content(result);
  return answer;
}

}  // namespace lox_test
