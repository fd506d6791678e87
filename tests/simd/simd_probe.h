// SPDX-License-Identifier: Apache-2.0
// Short computations on the vector layer, each from load to store, so that
// they can be compared byte by byte between backends.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/isa.h"

namespace lox {

// What is computed, and how it is stored.
enum ProbeOp {
  kProbeValue,         // any 16 bits: bytes 0 and 1 of each lane's input
  kProbeScale149,      // whole
  kProbeScale149Half,  // half
  kProbeScale255,
  kProbeAddSaturate,
  kProbePairsDot,
  kProbePairsDotSwapped,
  kProbePairsDotFirst,
  kProbePairsDotSecond,
  kProbePairsHalfDotFirst,
  kProbePairsHalfDotSecond,
  kProbeZipDot,
  kProbeZipHalfDot,
  kProbeWideDot,
  kProbeWideHalfDot,
  kProbe422LumaFirst,
  kProbe422LumaFirstChroma,
  kProbe422LumaSecond,
  kProbe422LumaSecondChroma,
  kProbeWordsLuma,
  kProbeWordPairsDot,
  kProbeShift1,
  kProbeShift7,
  kProbeShift8,
  kProbeOps
};
enum ProbeSink {
  kSinkWords,        // store16 of the lanes as they are
  kSinkPack565,      // store16
  kSinkThree,        // store3 of narrow<6>, narrow<7> and the loaded bytes
  kSinkFourHigh255,  // store4 of join and join_high_255
  kSinkFourLow255,   // store4 of join_low_255 and join
  kSinkUnshifted,    // store4 of join and join_high_255 without a shift
  // These are no lanes' sinks: they make bytes of the input itself.
  kSinkWeighed,    // every pixel format through weigh, one after the other
  kSinkEvenPairs,  // and through weigh_even, as pairs
  kSinkEvenRows,   // and as rows
  kSinkRgb,        // to_565 and store_rgba
  kSinkMoved,  // unzip, store_zip, swap_pairs, average_down, load_words_by_4
  kProbeSinks
};

constexpr int kProbePlanes = 4;
constexpr size_t kProbeMaxPixels = 64;

// `in` has kProbePlanes rows of 2 * kProbeMaxPixels bytes; 17 bytes a pixel of
// `out` at most are written. `stream` asks for streaming stores.
using ProbeFn = void (*)(ProbeOp op, ProbeSink sink, bool stream,
                         const uint8_t *in, uint8_t *out);

struct Probe {
  ProbeFn run;
  int pixels;
  int stream_alignment;
};
struct ProbeRows {
  // A set's wide and narrow vectors; none for the portable set.
  Probe wide, narrow;
};

#define LOX_DECLARE(set)             \
  namespace set {                    \
  extern const ProbeRows probe_rows; \
  }
LOX_FOR_EACH_SET(LOX_DECLARE)
#undef LOX_DECLARE

}  // namespace lox
