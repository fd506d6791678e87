// SPDX-License-Identifier: Apache-2.0
// Each operation of each backend that the machine runs, through each store,
// against the scalar backend: all pairs of bytes in the first two inputs, with
// edge and random bytes in the others.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "simd/simd_scalar.h"
#include "support/random.h"
#include "tests/simd/simd_probe.h"

namespace {

using namespace lox;

#include "tests/simd/simd_probe_run.h"

constexpr size_t kRow = 2 * kProbeMaxPixels;
constexpr size_t kIn = kProbePlanes * kRow;
constexpr size_t kOut = 17 * kProbeMaxPixels;
constexpr uint8_t kCanary = 0xA5;

using SimdTest = lox_test::SeededTest;

void expect_like_scalar(const Probe& probe, ProbeFn scalar,
                        lox_test::Random& random, const char* set) {
  ASSERT_LE(static_cast<size_t>(probe.pixels), kProbeMaxPixels);
  const uint8_t edges[] = {0, 1, 127, 128, 129, 254, 255, 64};
  uint8_t in[kIn];
  alignas(64) uint8_t got[kOut];
  alignas(64) uint8_t expected[kOut];
  // The low bytes count, so that every pair of bytes meets in some lane.
  for (int first = 0; first < 65536; first += probe.pixels) {
    random.fill(in, sizeof in);
    for (size_t i = 0; i < kRow; ++i) {
      const size_t value = static_cast<size_t>(first) + i;
      in[i] = static_cast<uint8_t>(value);
      in[kRow + i] = static_cast<uint8_t>(value >> 8);
      if (first % 3 == 0) in[2 * kRow + i] = edges[i % 8];
      if (first % 5 == 0) in[3 * kRow + i] = edges[i / 8 % 8];
    }
    for (int op = 0; op < kProbeOps; ++op) {
      for (int sink = 0; sink < kProbeSinks; ++sink) {
        for (const bool stream : {false, true}) {
          if (stream && (probe.stream_alignment == 0 || first % 1024 != 0)) {
            continue;
          }
          // Those that use the input itself do not look at the operation.
          if (sink > kSinkUnshifted && op > 0) continue;
          std::memset(got, kCanary, sizeof got);
          std::memset(expected, kCanary, sizeof expected);
          probe.run(ProbeOp(op), ProbeSink(sink), stream, in, got);
          scalar(ProbeOp(op), ProbeSink(sink), stream, in, expected);
          for (size_t i = 0; i < kOut; ++i) {
            ASSERT_EQ(got[i], expected[i])
                << set << ", " << probe.pixels << " pixels, operation " << op
                << ", store " << sink << (stream ? " streaming" : "")
                << ", byte " << i << ", input from " << first;
          }
        }
      }
    }
  }
}

TEST_F(SimdTest, BackendsDoWhatScalarLanesSay) {
#define LOX_SET_ROWS(set) {#set, &set::probe_rows},
  const struct {
    const char* name;
    const ProbeRows* rows;
  } sets[] = {LOX_FOR_EACH_SET(LOX_SET_ROWS)};
#undef LOX_SET_ROWS
  int backends = 0;
  for (int level = 0; level <= isa_best(); ++level) {
    const ProbeRows& rows = *sets[level].rows;
    for (const Probe* probe : {&rows.wide, &rows.narrow}) {
      if (probe->run == nullptr) continue;
      ASSERT_TRUE(probe->pixels == 16 || probe->pixels == 32 ||
                  probe->pixels == 64);
      ++backends;
      expect_like_scalar(*probe,
                         probe->pixels == 16   ? probe_run<ScalarLanes<16>>
                         : probe->pixels == 32 ? probe_run<ScalarLanes<32>>
                                               : probe_run<ScalarLanes<64>>,
                         random, sets[level].name);
    }
  }
  // Every level but the portable one has two.
  EXPECT_EQ(backends, 2 * isa_best());
}

}  // namespace
