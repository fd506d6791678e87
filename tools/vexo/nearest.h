// SPDX-License-Identifier: Apache-2.0
//
// What somebody may have meant who mistyped a name.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace vexo {

// How many letters are to be inserted, left out or exchanged.
inline size_t distance_of(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j < row.size(); ++j) row[j] = j;
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t exchanged = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchanged, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

// "; did you mean 'nv12'?", or nothing where no name is near.
inline std::string suggestion(std::string_view typed,
                              const std::vector<std::string> &names) {
  size_t least = std::max<size_t>(typed.size() / 3, 1) + 1;
  std::string nearest;
  for (const std::string &name : names) {
    const size_t distance = distance_of(typed, name);
    if (distance >= least) continue;
    least = distance;
    nearest = name;
  }
  return nearest.empty() ? "" : "; did you mean '" + nearest + "'?";
}

}  // namespace vexo
