// SPDX-License-Identifier: Apache-2.0
// A call for some rows of the destination, made for ranges that have every row
// once: together they give what the call for the whole picture gives.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "cases/cases.h"

namespace lox_test {

// Rules know whole pictures.
inline bool takes_rows(const Function &function) {
  return function.rule == nullptr &&
         std::string_view(function.name).ends_with("_rows");
}

using RowCall = std::function<int32_t(int32_t y0, int32_t y1)>;

// Makes the call for ranges in any order, over two contents of the destination
// each, so that every byte it writes is known: none may be written twice, and
// none outside the rows. Ranges that are none must be refused. Answers what all
// others answer. Its numbers do not come from the source, which goes on as it
// does behind the call for the whole picture.
int32_t by_rows(Picture *dst, int32_t height, int32_t format,
                const RowCall &call);

}  // namespace lox_test
