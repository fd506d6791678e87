// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of tone mapping. They work on runs of pixels that the nearest
// cache holds, a stage at a time: samples to R'G'B' codes, codes to 8-bit RGB,
// those to the destination. Every stage does whole groups of HdrRows::group
// pixels.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"
#include "orumlox/hdr.h"

namespace lox {

// Pixels of a run at most, a multiple of every group.
constexpr int kHdrRun = 256;

struct HdrRun {
  // 0..1023, as the first stage leaves them; the second overwrites them.
  alignas(64) uint16_t r[kHdrRun];
  alignas(64) uint16_t g[kHdrRun];
  alignas(64) uint16_t b[kHdrRun];
  // As the second stage leaves them.
  alignas(64) uint8_t red[kHdrRun];
  alignas(64) uint8_t green[kHdrRun];
  alignas(64) uint8_t blue[kHdrRun];
};

// The context's tables as registers take them: [0] has the low bytes of words,
// [1] the high ones.
struct HdrTables {
  alignas(64) uint8_t linear[2][1024];
  // An entry of gain, times 16, and the next one less it.
  alignas(64) uint8_t gain[2][256];
  alignas(64) uint8_t rise[2][256];
  // The first entries of gamma, every 16th of all, and kGammaSteps.
  alignas(64) uint8_t gamma[256];
  alignas(64) uint8_t sixteenths[256];
  alignas(64) uint8_t steps[256];
};

// to_sdr of HdrRows in registers, of contexts whose gamma is kGamma, where
// look_ups() says so.
struct HdrRegisterRows {
  void (*fill)(HdrTables *tables, const vexo_hdr_context &context);
  using ToSdr = void(HdrRun *run, const HdrTables &tables, int n);
  ToSdr *to_sdr[2][2];
};

struct HdrRows {
  // The largest of every `step`-th sample, 2 or 4, of every `step`-th row of a
  // plane without padding; 0 of none. Reads nothing behind the last such row.
  int (*largest_sample)(const uint16_t *luma, int32_t columns, int32_t rows,
                        int32_t step);

  // n is a multiple of the group below, and chroma is a sample for two pixels.
  int group;

  // Samples of three planes in the low 10 bits of words, and of two planes in
  // the high 10 bits: the chroma is then pairs at `u`.
  using ToCodes = void(HdrRun *run, const uint8_t *luma, const uint8_t *u,
                       const uint8_t *v, int n);
  ToCodes *codes_of_planar16;
  ToCodes *codes_of_p010;

  // By the context's tables; [HLG][variant]. A pixel whose largest component of
  // light (0..32767) is below `toe` has a gain between entries that are equal,
  // or between 0, entry 0, and the first of them.
  using ToSdr = void(HdrRun *run, const vexo_hdr_context *context, int toe,
                     int n);
  ToSdr *to_sdr[2][2];
  // The same by gathering loads, where the set has them; else the same.
  ToSdr *to_sdr_gathering[2][2];
  // Null where the set has too few registers.
  const HdrRegisterRows *in_registers;

  using Put = void(uint8_t *dst, const HdrRun *run, int n);
  Put *put_rgb888;
  Put *put_rgba8888;
  Put *put_argb8888;
  // By variant.
  Put *put_luma[2];
  Put *put_uv[2];
  Put *put_vu[2];
  using PutPlanes = void(uint8_t *u, uint8_t *v, const HdrRun *run, int n);
  PutPlanes *put_u_v[2];
};

LOX_ROW_TABLE(HdrRows, hdr_rows)

}  // namespace lox
