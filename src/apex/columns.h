// SPDX-License-Identifier: Apache-2.0
//
// Weights of columns as the row kernels of the set that runs want them: a table
// of as many blocks of outputs as differ. It knows no ends of rows, beyond
// which the samples there must have been repeated.
#pragma once

#include <stdint.h>

#include "apex/apex_rows.h"
#include "apex/taps.h"

namespace lox {

class ApexArrangement {
 public:
  ApexArrangement(const ApexAxis &axis, const ApexPeriod &period,
                  ApexSample sample, int32_t parts);

  // Whether this takes longer than what turns rows.
  bool may_turn() const {
    return way_ != ApexWay::kPhases && way_ != ApexWay::kStreams;
  }
  // Whether this fetches the next rows, and goes from load to load.
  bool fetches() const { return !may_turn(); }
  bool streams() const { return way_ == ApexWay::kStreams; }

  int32_t blocks() const { return blocks_; }
  // Of a block.
  int32_t outputs() const { return outputs_; }
  int32_t sums() const { return block_; }

  struct Tables {
    int32_t *first;
    uint32_t *places;
    int16_t *weights;
  };
  // Their entries.
  int64_t firsts() const { return int64_t{entries_} * firsts_; }
  int64_t places() const { return int64_t{entries_} * places_; }
  int64_t weights() const { return int64_t{entries_} * weights_; }
  void fill(const ApexPeriod &period, const Tables &tables) const;

  // kStreams: the loads before what completes the first block. All others are
  // a block's.
  int32_t loads_before() const { return before_; }
  // The parts of a row that a load takes.
  int64_t begin(const Tables &tables, int32_t load) const;
  int64_t end(const Tables &tables, int32_t load) const;
  // No more of them than this for so many blocks.
  int64_t most(int32_t blocks) const {
    return int64_t{blocks} * span_ + (before_ + 1) * reach_ + parts_;
  }
  // And than this for the loads that reach beyond a row's begin and those that
  // reach beyond its end.
  int64_t edges() const {
    return 2 * taps_ * parts_ + (4 + before_) * (reach_ + span_ + parts_);
  }
  ApexColumns columns(const Tables &tables) const;
  // Some loads of rows that begin with part `from`, in a strip whose first
  // block's is `strip`.
  ApexPiece piece(int32_t load, int32_t loads, int64_t from,
                  int32_t strip) const {
    return {nullptr,
            nullptr,
            static_cast<ptrdiff_t>(load / entries_ * advance_ - from),
            ptrdiff_t{2} * (load - strip) * block_,
            load % entries_,
            loads,
            0};
  }

 private:
  void arrange_phases(const ApexPeriod &period);
  void arrange_streams(const ApexPeriod &period);
  void fill_plain(const ApexPeriod &period, int64_t output, int32_t *first,
                  int16_t *weights) const;
  void fill_direct(const ApexPeriod &period, int64_t output, int32_t *first,
                   int16_t *weights) const;
  void fill_lanes(const ApexPeriod &period, int64_t output, int32_t *first,
                  uint32_t *places, int16_t *weights) const;
  void fill_phases(const ApexPeriod &period, const Tables &tables) const;
  void fill_streams(const ApexPeriod &period, const Tables &tables) const;
  void fill_weights(const ApexPeriod &period, int32_t phase, int32_t behind,
                    int32_t every, int16_t *weights) const;
  uint32_t place(int64_t part) const;

  ApexWay way_;
  ApexSample sample_;
  int32_t parts_, taps_;
  int32_t block_ = kPlainSums;  // sums of a block
  int32_t outputs_ = 0, blocks_ = 0;
  // Blocks of the tables, and how many parts further they come again.
  int32_t entries_ = 1;
  int64_t advance_ = 0;
  // Of a block of the tables.
  int64_t firsts_ = 0, places_ = 0, weights_ = 0;
  int32_t steps_ = 0;
  // Of sums that are picked together, how many, and how often in a block.
  int32_t sums_ = 0, lanes_ = 0;
  int32_t words_ = 0;             // kDirect: of a register
  int32_t phases_ = 0;            // outputs of a period
  int32_t before_ = 0;            // kStreams: loads before the first block
  int32_t lane_ = 0;              // kPhases: parts from lane to lane
  int64_t reach_ = 0, span_ = 0;  // what an output's loads take, outputs apart
};

}  // namespace lox
