// SPDX-License-Identifier: Apache-2.0
//
// Some rows of a picture: what drivers work on, all of them or a caller's.
#pragma once

#include <stdint.h>

#include "orumlox/base.h"

namespace lox {

// Rows begin .. end - 1, of plane 0 unless said.
struct RowRange {
  int32_t begin, end;
};
inline constexpr RowRange kAllRows = {0, INT32_MAX};

// Whether a caller may ask for these rows of a picture of `height`. Where
// chroma has half the rows they are whole pairs, but for a last one.
constexpr bool is_range(RowRange rows, int32_t height, bool in_pairs) {
  const int32_t end = height < 1 ? 0 : height;
  const auto is_bound = [&](int32_t y) {
    return !in_pairs || y % 2 == 0 || y == end;
  };
  return 0 <= rows.begin && rows.begin <= rows.end && rows.end <= end &&
         is_bound(rows.begin) && is_bound(rows.end);
}

// Calls work(rows) if a caller may ask for them.
template <class Work>
int32_t in_range(RowRange rows, int32_t height, bool in_pairs, Work work) {
  return is_range(rows, height, in_pairs) ? work(rows) : VEXO_ERR_ARG;
}

// The rows of a plane of `count` rows that go with `rows` of a picture of
// `height`. A plane of at most half the rows has one for two of them. Rows
// beyond go with the last ones, of a picture without any with its empty range:
// ranges that have every row of the picture once have every row of its planes.
constexpr RowRange rows_of_plane(RowRange rows, int32_t height, int32_t count) {
  if (count < 1 || (rows.begin == rows.end && height > 0)) return {0, 0};
  const int shift = count <= height / 2 + height % 2 ? 1 : 0;
  const auto place = [&](int32_t y) {
    return y >= height || y >> shift > count ? count : y >> shift;
  };
  return {rows.begin == 0 ? 0 : place(rows.begin), place(rows.end)};
}

}  // namespace lox
