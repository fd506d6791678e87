// SPDX-License-Identifier: Apache-2.0
#include "cases/by_rows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

// How far apart the rows of a plane are that belong to one row of the picture,
// or two; 0 where that is not looked at: of tiles, of rows upwards, of odd
// strides, which may be rounded, and of chroma of unusual sizes.
size_t row_distance(const vexo_img &img, int p, int32_t height,
                    int32_t format) {
  const bool usual =
      p == 0 || (in_pairs(format) && img.height[p] == half_up(height));
  const int32_t stride = img.stride[p];
  if (format == VEXO_FMT_T64X32 || stride < 1 || stride % 2 != 0) return 0;
  return usual ? static_cast<size_t>(stride) : 0;
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
  // Their memory stays for the next call.
  static thread_local Bytes before, other, over_before, over_other, result,
      written;
  height = std::max(height, 0);
  dst->get_content(&before);
  other = before;
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
                dst->has_content(before),
            "not refused", range);
  }

  result = before;
  written.assign(before.size(), 0);
  int32_t answer = INT32_MAX;
  for (const Range &range : partition(height, step, random)) {
    dst->set_content(other);
    call(range.first, range.second);
    dst->get_content(&over_other);
    dst->set_content(before);
    const int32_t status = call(range.first, range.second);
    require(answer == INT32_MAX || status == answer, "another answer", range);
    answer = status;
    dst->get_content(&over_before);
    const auto untouched = [&](size_t i, size_t count) {
      return std::memcmp(&over_before[i], &before[i], count) == 0 &&
             std::memcmp(&over_other[i], &other[i], count) == 0;
    };
    size_t end = 0;
    for (int p = 0; p < 4; ++p) {
      size_t i = end;
      end += static_cast<size_t>(dst->bytes(p));
      const size_t distance = row_distance(dst->img, p, height, format);
      for (int32_t y = 0; i < end; y += p == 0 ? 1 : 2) {
        const size_t count =
            distance == 0 ? end - i : std::min(distance, end - i);
        const size_t behind = i + count;
        if (untouched(i, count)) i = behind;
        const int32_t row = std::min(y, height - 1);
        const bool inside =
            distance == 0 || (row >= range.first && row < range.second);
        for (; i < behind; ++i) {
          if (untouched(i, 1)) continue;
          require(written[i] == 0, "written twice", range);
          require(inside, "written outside", range);
          written[i] = 1;
          result[i] = over_before[i];
        }
      }
    }
  }
  dst->set_content(result);
  return answer;
}

}  // namespace lox_test
