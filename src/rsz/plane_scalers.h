// SPDX-License-Identifier: Apache-2.0
//
// The plane scalers as the dispatchers call them.
#pragma once

#include <cstdint>

#include "rsz/scale_plane.h"

namespace lox {

struct Plane {
  const uint8_t *src;
  int32_t src_width, src_height, src_stride;
  uint8_t *dst;
  int32_t dst_width, dst_height, dst_stride;
};

// Scales and turns; the sizes of the destination are those after the turn.
// Returns a status.
int32_t scale(SampleType type, Turn turn, const Plane &plane, int32_t mode,
              uint8_t *scratch);

// Bytes of scratch that scale() wants for this plane; 0 for none.
int64_t scratch_for(SampleType type, Turn turn, const Plane &plane);

}  // namespace lox
