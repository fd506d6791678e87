// SPDX-License-Identifier: Apache-2.0
//
// A plane scaled by Lanczos filters.
#pragma once

#include <stdint.h>

#include "apex/apex_rows.h"
#include "apex/taps.h"

namespace lox {

struct ApexPlane {
  const uint8_t *src;
  uint8_t *dst;
  int32_t src_stride, dst_stride;
  ApexSample sample;
  int32_t parts;  // of a sample: 1 to 4
  int32_t alpha;  // the byte that colours are multiplied by, or -1
  ApexAxis across, down;
  // Whether the source comes from further away than the second cache: rows are
  // fetched ahead then or, where loads overlap, copied first.
  bool far;
};

// Bytes of scratch memory that a plane takes.
int64_t apex_scratch(const ApexPlane &plane);
[[gnu::nonnull]] void apex_scale(const ApexPlane &plane, uint8_t *scratch);

}  // namespace lox
