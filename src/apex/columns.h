// SPDX-License-Identifier: Apache-2.0
//
// Weights of columns as the row kernels of the set that runs want them.
#pragma once

#include <stdint.h>

#include "apex/apex_rows.h"
#include "apex/taps.h"

namespace lox {

class ApexArrangement {
 public:
  ApexArrangement(const ApexAxis &axis, ApexSample sample, int32_t parts);

  // Between the weights of outputs that columns() is given.
  int32_t pitch() const { return is_plain() ? steps_ : taps_; }
  // Sums in a row that has room for whole blocks.
  int64_t room() const {
    const int64_t outputs = count_ > outputs_ ? count_ : outputs_;
    return outputs * apex_sums(parts_);
  }
  // Entries of the tables.
  int64_t firsts() const;
  int64_t places() const;
  int64_t weights() const;
  // Parts behind a row that loads may reach.
  int64_t beyond() const { return reach_ + int64_t{taps_} * parts_; }

  // Columns whose loads stay inside a row, and the others, for which what is
  // behind part `begin` of the row goes to where more can be read.
  struct Columns {
    ApexColumns body, tail;
    int32_t tail_output;
    int64_t begin;
  };
  Columns columns(const ApexTaps &taps, int32_t *first, uint32_t *places,
                  int16_t *weights) const;

 private:
  bool is_plain() const { return way_ == ApexWay::kPlain; }
  int32_t block_output(int32_t block) const;
  int32_t first_of(const ApexTaps &taps, int32_t output) const;
  int16_t weight(const ApexTaps &taps, int32_t output, int32_t tap) const;
  uint32_t place(int32_t part) const;
  // The tables of a block; returns the first part behind its loads.
  int64_t add_block(const ApexTaps &taps, int32_t block, int32_t *first,
                    uint32_t *places, int16_t *weights) const;

  ApexWay way_;
  ApexSample sample_;
  int32_t parts_, taps_, count_, src_count_;
  int32_t block_ = 8;  // sums of a block
  int32_t outputs_ = 0, blocks_ = 0;
  int32_t steps_ = 0;
  // Of sums that are picked together, how many, and how often in a block.
  int32_t sums_ = 0, lanes_ = 0;
  int32_t words_ = 0;  // kDirect: of a register
  int64_t reach_ = 0;  // what the loads of an output take
};

}  // namespace lox
