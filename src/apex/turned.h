// SPDX-License-Identifier: Apache-2.0
//
// Rows scaled across side by side: many rows are turned, so that a vector has
// the same two neighbours of each, which one pair of weights serves. That is
// for reductions of which no shuffle finds the neighbours of many outputs.
#pragma once

#include <stdint.h>

#include "apex/apex_rows.h"
#include "apex/taps.h"

namespace lox {

class ApexTurned {
 public:
  ApexTurned(const ApexAxis &axis, ApexSample sample, int32_t parts);

  // Whether a set has it and a plane of so many rows gains by it.
  static bool pays(const ApexAxis &axis, int32_t rows) {
    return ApexTurned::rows() > 0 && rows >= ApexTurned::rows() &&
           axis.from > int64_t{2} * axis.to;
  }
  static int32_t rows() { return apex_rows().turned_rows; }

  // Sums in a row that has room for whole blocks.
  int64_t room() const { return outputs_ * apex_sums(parts_); }
  // Words of the turned samples of a strip, and bytes of the end of all rows.
  int64_t words() const { return (units_ + 8) * 2 * rows(); }
  int64_t end_bytes() const { return (units_ + 16) * 4 * rows(); }

  // Whole blocks of them.
  int64_t outputs() const { return outputs_; }
  // Columns of rows() rows to half as many pairs of rows of words.
  void make(const uint8_t *const *rows, const ApexTaps &taps, int16_t *words,
            uint8_t *end, int16_t *const *pairs) const;

 private:
  ApexSample sample_;
  int32_t parts_, src_count_;
  int64_t outputs_;  // in whole blocks
  int32_t steps_;    // pairs of weights of each
  int64_t units_;    // of pairs of neighbours, in a strip at most
};

}  // namespace lox
