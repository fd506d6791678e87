// SPDX-License-Identifier: Apache-2.0
//
// The plane scalers as the dispatchers call them, and how a job is made of a
// plane.
#pragma once

#include <cstdint>

#include "rsz/scale_plane.h"

namespace lox {

struct Plane {
  const uint8_t *src;
  int32_t src_width, src_height;
  int32_t dst_width, dst_height;  // after the turn
  uint8_t *dst;
  int32_t src_stride, dst_stride;
  // Of the destination as it is before the turn.
  RowRange rows = kAllRows;

  // The destination's sizes before the turn.
  int32_t width(Turn turn) const {
    return is_quarter(turn) ? dst_height : dst_width;
  }
  int32_t height(Turn turn) const {
    return is_quarter(turn) ? dst_width : dst_height;
  }
};

// The parameters of plane scalers and of kernels as a Plane.
#define LOX_PLANE                                                       \
  {                                                                     \
    src, src_width, src_height, dst_width, dst_height, dst, src_stride, \
        dst_stride                                                      \
  }

// A direction that shrinks to 1 sample or more.
constexpr Axis reduced(int32_t src, int32_t dst) {
  return {src, dst, src % dst == 0 ? Scaling::kReduceWhole : Scaling::kReduce};
}

// What to do with a plane once its directions are known. Quirk: an odd stride
// of 16-bit words is rounded down, because it counts whole words.
ScaleJob make_job(SampleType type, Turn turn, const Plane &plane, Axis across,
                  Axis down, uint8_t *scratch);

// The same by the ratio of the sizes, which are 1 or more.
ScaleJob make_job(SampleType type, Turn turn, const Plane &plane, int32_t mode,
                  uint8_t *scratch);

// Whether scale() takes the sizes of a plane that is not turned.
bool is_scaled_plane(const Plane &plane);

// Scales and turns; the sizes of the destination are those after the turn.
// Returns a status.
int32_t scale(SampleType type, Turn turn, const Plane &plane, int32_t mode,
              uint8_t *scratch);

// Reduces 16-bit components of units of 2 or 4 bytes, by whole factors only.
// Returns a status, which follows from the sizes.
int32_t status_of_words(const Plane &plane);
int32_t reduce_words(int32_t unit, const Plane &plane);

// Bytes of scratch that scale() wants for this plane; 0 for none.
int64_t scratch_for(SampleType type, Turn turn, const Plane &plane);

}  // namespace lox
