// SPDX-License-Identifier: Apache-2.0
//
// Two rows of RGB from the rows that they are scaled from: what lies between
// the two steps are registers.
#pragma once

#include <stdint.h>

#include "common/row_table.h"
#include "simd/pixel_format.h"

namespace lox {

// Where the columns of all rows come from. A vector is 64 pixels: two registers
// of 32 luma samples and two of 16 chroma pairs, each of 64 source bytes, whose
// words are spread so that every half lane has the bytes that four samples or
// two pairs are made of.
struct PairColumns {
  // Which words, and which of their bytes the samples and their neighbours are.
  struct Spread {
    uint8_t words[64], bytes[64];
  };
  struct Table {
    Spread luma[2], chroma[2];
  };
  struct Vector {
    int32_t luma[2], chroma[2];  // source bytes, and pairs
    int32_t x, table;
  };
  static constexpr int kVectors = 128;
  static constexpr int kTables = 32;

  int32_t count;
  // The last one overlaps the one before.
  bool overlaps;
  Vector vectors[kVectors];
  alignas(64) Table tables[kTables];
};

// What a row is the mean of: two rows, or one twice. By planes.
struct TwoRows {
  const uint8_t *row[2][2];
  bool blended;
};

// How two rows are averaged: four samples at once, or what columns gave.
enum class Mean : int32_t { kOfFour, kOfTwo };

struct PairRows {
  TwoRows luma[2], chroma;
  Mean mean;
  // Whether chroma is in planes; the tables know which of pairs is first.
  bool planes;
  bool stream;  // write past the caches
  uint8_t *rgb[2];
  // Rows of luma, and then of chroma, that are fetched for what follows.
  const uint8_t *ahead[8];
  int ahead_luma, ahead_count;
};

// By RgbLayout. Null where the set has no such kernel.
struct PairKernels {
  void (*convert[kRgbLayouts])(const PairRows &rows,
                               const PairColumns &columns);
};

LOX_ROW_TABLE(PairKernels, pair_rows)

}  // namespace lox
