// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of scaling by Lanczos filters.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

// Samples: bytes, words with 10 bits at either end, and premultiplied ones of
// 14 bits.
enum class ApexSample { kByte, kLow10, kHigh10, k14 };
constexpr int apex_bits(ApexSample s) {
  return s == ApexSample::kByte ? 8 : s == ApexSample::k14 ? 14 : 10;
}
constexpr int apex_bytes(ApexSample s) {
  return s == ApexSample::kByte ? 1 : 2;
}

// How the weights of columns lie.
//   kPlain: those of an output in turn.
//   kLanes, kTwoLanes, kRegister, kTwoRegisters: sums of products of two
//   neighbours lie side by side; the samples that they take are picked from 16
//   bytes for four sums (kLanes) or eight (kTwoLanes), from a register of words
//   for 16, or from two.
//   kDirect: those of an output make registers; each is summed on its own.
//   kPhases: sums that have the same weights make registers, of one output or
//   two in a period; the samples that these take are the same.
//   kStreams: 4:1 and 3:2; every sample is loaded once.
enum class ApexWay {
  kPlain,
  kLanes,
  kTwoLanes,
  kRegister,
  kTwoRegisters,
  kDirect,
  kPhases,
  kStreams
};

// Sums of a block of kPlain.
constexpr int32_t kPlainSums = 8;

// The columns of a plane as tables of blocks of outputs. After the last of them
// the first comes again, `advance` parts further.
struct ApexColumns {
  ApexWay way;
  int32_t parts;  // of a sample: 1 to 4
  int32_t entries;
  ptrdiff_t advance;
  // Where outputs (kPlain, kDirect) or what is picked from begin, in parts
  // behind a piece's `base`.
  const int32_t *first;
  // For each sum the bytes, or the words, that it takes. Of kPhases the bytes
  // of two pairs of samples, and the words that make the lanes of AVX-512.
  const uint32_t *places;
  const int16_t *weights;
  // Of weights: pairs of them; registers for kDirect; words for kPlain; twice
  // two pairs for kPhases.
  int32_t steps;
  // Outputs of a period. kPhases: parts from lane to lane.
  int32_t phases, lane;
};
// Some blocks of two rows, from block `entry` of the tables on; their words go
// to dst[at] and on.
struct ApexPiece {
  const uint8_t *row, *below;
  ptrdiff_t base, at;
  int32_t entry, blocks;  // kStreams: loads, those before the first block too
  // kPhases, kStreams: what is fetched for later is so many bytes further, or
  // 0.
  ptrdiff_t ahead;
};
// Of kStreams, loads of registers with so many sums of a row that come before
// what completes the first: of 4:1, where it is complete with the periods that
// are so many further, and of 3:2.
constexpr int32_t kQuartersAhead = 5;
constexpr int32_t apex_quarters_before(int32_t sums, int32_t parts) {
  return (kQuartersAhead * parts - 1) / sums + 1;
}
constexpr int32_t apex_thirds_before(int32_t sums, int32_t parts) {
  return 2 * parts > sums ? 2 : 1;
}
// Three parts are summed as four, the last of which is anything.
constexpr int32_t apex_sums(int32_t parts) { return parts == 3 ? 4 : parts; }
// The weights of some outputs, `pitch` words apart, of which `steps` pairs
// count.
struct ApexWeights {
  const int16_t *words;
  ptrdiff_t pitch;
  int32_t steps;
};

// Rows that are turned at once at most.
constexpr int32_t kMostTurnedRows = 32;

struct ApexRows {
  // Bytes of a register in the ways kLanes, kTwoLanes and kDirect, 0 where the
  // way is kPlain, and in the ways kPhases and kStreams; sums of a row in one
  // of kStreams; whether there are kRegister and kTwoRegisters; what the
  // weights of kPlain are padded to.
  int32_t register_bytes, phase_bytes, stream_sums;
  bool picks;
  int32_t plain_step;

  // Columns of two rows of samples to words of 14 bits, which may swing beyond:
  // one of each row in turn. Rows have something wherever a weight of 0 belongs
  // to and, for loads, behind that.
  void (*across)(ApexSample sample, const ApexColumns &columns,
                 const ApexPiece *pieces, int32_t count, int16_t *dst);
  // Of turned_rows rows (0: there are none of these two) `chunks` times 16
  // bytes or, of three parts, 12, to pairs of neighbouring samples: for each
  // part of each such pair two words of every row. dst has room for 8 more.
  int32_t turned_rows;
  void (*turn)(ApexSample sample, const uint8_t *const *rows, int32_t parts,
               int32_t chunks, int16_t *dst);
  // `count` outputs of those rows, whose first pair of samples is first[i] less
  // `begin`, to word 2 `at` of each pair of rows and on.
  void (*across_turned)(ApexSample sample, const int16_t *turned, int32_t parts,
                        int32_t count, int32_t begin, const int32_t *first,
                        const ApexWeights &weights, ptrdiff_t at,
                        int16_t *const *pairs);
  // n samples of `steps` such pairs of rows.
  void (*down)(ApexSample sample, const int16_t *const *pairs,
               const int16_t *weights, int32_t steps, ptrdiff_t n,
               uint8_t *dst);
  // Null or: three parts of n pixels to planes that are `apart` bytes apart,
  // and back. What is fetched for later is `ahead` bytes further, or 0.
  void (*split)(const uint8_t *row, ptrdiff_t ahead, ptrdiff_t n,
                ptrdiff_t apart, uint8_t *dst);
  void (*join)(const uint8_t *planes, ptrdiff_t n, ptrdiff_t apart,
               uint8_t *dst);
  // Four bytes to three, n times.
  void (*close)(const uint8_t *row, ptrdiff_t n, uint8_t *dst);
  // n pixels of 32 bits to samples of 14 bits, with the alpha in byte `alpha`,
  // and back.
  void (*premultiply)(const uint8_t *row, int alpha, ptrdiff_t n,
                      uint16_t *dst);
  void (*divide)(const uint16_t *row, int alpha, ptrdiff_t n, uint8_t *dst);
};

LOX_ROW_TABLE_WITH_DOT(ApexRows, apex_rows)

}  // namespace lox
