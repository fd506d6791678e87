// SPDX-License-Identifier: Apache-2.0
#include "apex/columns.h"

#include <cstddef>
#include <cstring>

#include "common/divisor.h"

namespace lox {

namespace {

int32_t round_up(int32_t n, int32_t step) {
  return (n + step - 1) / step * step;
}

// Whether so many sums find what they take in so many parts.
bool fits(const ApexAxis &axis, int32_t parts, int32_t sums, int32_t within) {
  const int64_t further = (int64_t{sums} / apex_sums(parts) - 1) * axis.from;
  return ((further + axis.to - 1) / axis.to + 2) * parts <= within;
}

// Whether outputs come again after so many samples.
bool is_period(const ApexAxis &axis, const ApexPeriod &period, int32_t outputs,
               int64_t samples) {
  return period.outputs == outputs && period.samples == samples &&
         outputs * int64_t{axis.from} == samples * axis.to;
}

ApexWay way_of(const ApexAxis &axis, const ApexPeriod &period,
               ApexSample sample, int32_t parts) {
  const ApexRows &rows = apex_rows();
  if (rows.register_bytes == 0) return ApexWay::kPlain;
  if (rows.phase_bytes > 0) {
    const bool bytes = sample == ApexSample::kByte;
    const bool quarter = is_period(axis, period, 1, 4);
    const bool thirds = is_period(axis, period, 2, 3);
    // Of bytes, where that is less work.
    const bool streams = quarter ? rows.phase_bytes != 32 || parts == 4
                                 : rows.phase_bytes != 16 && parts == 4;
    if ((quarter || thirds) && (!bytes || streams)) {
      return ApexWay::kStreams;
    }
    if (bytes && (thirds || (period.samples <= 4 &&
                             is_period(axis, period, 1, period.samples)))) {
      return ApexWay::kPhases;
    }
  }
  if (rows.picks && fits(axis, parts, 16, 32)) return ApexWay::kRegister;
  if (rows.picks && fits(axis, parts, 16, 64)) return ApexWay::kTwoRegisters;
  const int32_t lane = 16 / apex_bytes(sample);
  if (rows.register_bytes == 32 && fits(axis, parts, 8, lane)) {
    return ApexWay::kTwoLanes;
  }
  return fits(axis, parts, 4, lane) ? ApexWay::kLanes : ApexWay::kDirect;
}

}  // namespace

ApexArrangement::ApexArrangement(const ApexAxis &axis, const ApexPeriod &period,
                                 ApexSample sample, int32_t parts)
    : way_(way_of(axis, period, sample, parts)),
      sample_(sample),
      parts_(parts),
      taps_(period.taps) {
  const int32_t bytes = apex_rows().register_bytes;
  const int32_t sums = apex_sums(parts);
  steps_ = (taps_ + 1) / 2;
  int32_t load = 16 / apex_bytes(sample);
  switch (way_) {
    case ApexWay::kPlain:
      steps_ = round_up(taps_, apex_rows().plain_step);
      reach_ = steps_ * parts + 8;
      firsts_ = block_ / sums;
      weights_ = firsts_ * steps_;
      break;
    case ApexWay::kDirect:
      block_ = bytes / 4;
      words_ = bytes / 2;
      steps_ = (taps_ * parts - 1) / words_ + 1;
      reach_ = int64_t{steps_} * words_;
      firsts_ = block_ / sums;
      weights_ = firsts_ * steps_ * words_;
      break;
    case ApexWay::kPhases:
      arrange_phases(period);
      break;
    case ApexWay::kStreams:
      arrange_streams(period);
      break;
    case ApexWay::kLanes:
    case ApexWay::kTwoLanes:
      sums_ = way_ == ApexWay::kLanes ? 4 : 8;
      block_ = bytes / 2;
      break;
    default:
      sums_ = 16;
      block_ = 32;
      load = way_ == ApexWay::kRegister ? 32 : 64;
  }
  if (sums_ > 0) {
    lanes_ = block_ / sums_;
    firsts_ = lanes_;
    places_ = block_;
    weights_ = int64_t{block_} * 2 * steps_;
    reach_ = (steps_ - int64_t{1}) * 2 * parts + load;
  }
  outputs_ = block_ / sums;
  blocks_ = (axis.dst_count - 1) / outputs_ + 1;
  span_ = (int64_t{outputs_} * axis.from / axis.to + 2) * parts;
  // As many blocks as make whole periods, or all.
  const int64_t whole =
      period.outputs / common_divisor(period.outputs, outputs_);
  entries_ = static_cast<int32_t>(whole < blocks_ ? whole : blocks_);
  advance_ = whole * outputs_ / period.outputs * period.samples * parts;
}

// Registers of one phase: lanes of neighbouring periods, each with what two
// pairs of samples take.
void ApexArrangement::arrange_phases(const ApexPeriod &period) {
  const int32_t bytes = apex_rows().phase_bytes;
  phases_ = period.outputs;
  lane_ = static_cast<int32_t>(4 * period.samples);
  block_ = bytes / 2;
  // Of two phases the second begins a pair behind the first.
  steps_ = phases_ == 1 ? ((taps_ + 1) / 2 + 1) / 2 : (3 + taps_ + 3) / 4;
  firsts_ = 1;
  // Two registers of places and, for AVX-512, where lanes are.
  places_ = int64_t{3} * bytes / 4;
  weights_ = int64_t{2} * steps_ * phases_ * (bytes / 2);
  const int64_t last = bytes == 64 ? 64 : (bytes / 16 - 1) * lane_ + 16;
  const int64_t next = phases_ == 1 ? bytes / 16 * lane_ : 0;
  reach_ = (steps_ - int64_t{1}) * 4 * parts_ + next + last;
}

void ApexArrangement::arrange_streams(const ApexPeriod &period) {
  const int32_t words = apex_rows().phase_bytes / 2;
  const int32_t sums = apex_rows().stream_sums;
  phases_ = period.outputs;
  firsts_ = 1;
  if (phases_ == 1) {
    block_ = words / 2;
    weights_ = int64_t{12} * words;
    before_ = apex_quarters_before(block_, parts_);
    reach_ = int64_t{4} * block_;
  } else {
    block_ = 4 * sums;
    weights_ = int64_t{20} * words;
    before_ = apex_thirds_before(sums, parts_);
    reach_ = int64_t{6} * sums;
  }
}

// Where a part and the one that it is summed with are: words of a register, or
// bytes of 16, a zero being behind what is a byte.
uint32_t ApexArrangement::place(int64_t part) const {
  const auto a = static_cast<uint32_t>(part);
  const auto b = static_cast<uint32_t>(part + parts_);
  if (sums_ == 16) return a | b << 16;
  if (sample_ == ApexSample::kByte) return 0x80008000 | a | b << 16;
  return (2 * a) | (2 * a + 1) << 8 | (2 * b) << 16 | (2 * b + 1) << 24;
}

void ApexArrangement::fill(const ApexPeriod &period,
                           const Tables &tables) const {
  std::memset(tables.weights, 0, static_cast<size_t>(2 * weights()));
  for (int32_t entry = 0; entry < entries_; ++entry) {
    const int64_t output = int64_t{entry} * outputs_;
    int32_t *const first = tables.first + entry * firsts_;
    int16_t *const weights = tables.weights + entry * weights_;
    if (way_ == ApexWay::kPlain) {
      fill_plain(period, output, first, weights);
    } else if (way_ == ApexWay::kDirect) {
      fill_direct(period, output, first, weights);
    } else if (way_ == ApexWay::kPhases) {
      fill_phases(period, tables);
    } else if (way_ == ApexWay::kStreams) {
      fill_streams(period, tables);
    } else {
      fill_lanes(period, output, first, tables.places + entry * places_,
                 weights);
    }
  }
}

void ApexArrangement::fill_plain(const ApexPeriod &period, int64_t output,
                                 int32_t *first, int16_t *weights) const {
  for (int64_t i = 0; i < firsts_; ++i, weights += steps_) {
    first[i] = static_cast<int32_t>(period.first_of(output + i) * parts_);
    std::memcpy(weights, period.weights_of(output + i),
                static_cast<size_t>(taps_) * sizeof *weights);
  }
}

void ApexArrangement::fill_direct(const ApexPeriod &period, int64_t output,
                                  int32_t *first, int16_t *weights) const {
  const ptrdiff_t pitch = ptrdiff_t{steps_} * words_;
  for (int64_t o = 0; o < firsts_; ++o, weights += pitch) {
    first[o] = static_cast<int32_t>(period.first_of(output + o) * parts_);
    const int16_t *const own = period.weights_of(output + o);
    for (int32_t i = 0; i < pitch; ++i) {
      // Of pairs two of the first parts and two of the second in turn.
      const int32_t tap = parts_ == 1 ? i : i / 4 * 2 + i % 2;
      if (tap < taps_) weights[i] = own[tap];
    }
  }
}

void ApexArrangement::fill_lanes(const ApexPeriod &period, int64_t output,
                                 int32_t *first, uint32_t *places,
                                 int16_t *weights) const {
  for (int32_t i = 0; i < block_; ++i, weights += 2) {
    const int64_t from = period.first_of(output + i / parts_);
    int32_t &begin = first[i / sums_];
    if (i % sums_ == 0) begin = static_cast<int32_t>(from * parts_);
    places[i] = place(from * parts_ - begin + i % parts_);
    const int16_t *const own = period.weights_of(output + i / parts_);
    for (int32_t tap = 0; tap < taps_; ++tap) {
      weights[tap / 2 * 2 * block_ + tap % 2] = own[tap];
    }
  }
}

void ApexArrangement::fill_phases(const ApexPeriod &period,
                                  const Tables &tables) const {
  const int32_t words = apex_rows().phase_bytes / 2;
  const int32_t sums = words / 2;
  tables.first[0] = period.first[0] * parts_;
  for (int32_t i = 0; i < sums; ++i) {
    const int64_t part =
        i % 4 / parts_ * (period.samples * parts_) + i % parts_;
    tables.places[i] = place(part);
    tables.places[sums + i] = place(part + int64_t{2} * parts_);
    // AVX-512 takes lanes as words.
    const auto word = static_cast<uint32_t>(i / 4 * lane_ / 2 + i % 4 * 2);
    tables.places[2 * sums + i] = word | (word + 1) << 16;
  }
  // Registers of both phases in turn; the second begins two samples behind.
  for (int32_t i = 0; i < phases_; ++i) {
    fill_weights(period, i, 2 * i, phases_,
                 tables.weights + ptrdiff_t{i} * words);
  }
}
void ApexArrangement::fill_streams(const ApexPeriod &period,
                                   const Tables &tables) const {
  tables.first[0] = period.first[0] * parts_;
  if (phases_ == 1) {
    // By AVX-512 they are complete with the periods that are read ahead.
    if (apex_rows().phase_bytes == 64) {
      tables.first[0] += 4 * (kQuartersAhead * parts_ - before_ * block_);
    }
    return fill_weights(period, 0, 0, 1, tables.weights);
  }
  // The centres are 1/4 or 1/8 behind a sample, and three halves apart: outputs
  // begin with samples 0, 2, 3 and 5, in pairs 0, 1, 1 and 2.
  const int32_t words = apex_rows().phase_bytes / 2;
  for (int32_t i = 0; i < 4; ++i) {
    fill_weights(period, i % 2, i / 2, 1,
                 tables.weights + ptrdiff_t{5} * i * words);
  }
}
// The weights of a phase by pairs, `behind` the first, in every so many
// registers.
void ApexArrangement::fill_weights(const ApexPeriod &period, int32_t phase,
                                   int32_t behind, int32_t every,
                                   int16_t *weights) const {
  const int32_t words = apex_rows().phase_bytes / 2;
  for (int32_t tap = 0; tap < taps_; ++tap) {
    const int32_t at = tap + behind;
    int16_t *const w = weights + ptrdiff_t{at} / 2 * every * words + at % 2;
    for (int32_t i = 0; i < words; i += 2) {
      w[i] = period.weights[phase * taps_ + tap];
    }
  }
}

int64_t ApexArrangement::begin(const Tables &tables, int32_t load) const {
  return tables.first[load % entries_ * firsts_] + load / entries_ * advance_;
}
int64_t ApexArrangement::end(const Tables &tables, int32_t load) const {
  return tables.first[load % entries_ * firsts_ + firsts_ - 1] +
         load / entries_ * advance_ + reach_;
}

ApexColumns ApexArrangement::columns(const Tables &tables) const {
  return {way_,           parts_,
          entries_,       static_cast<ptrdiff_t>(advance_),
          tables.first,   tables.places,
          tables.weights, steps_,
          phases_,        lane_};
}

}  // namespace lox
