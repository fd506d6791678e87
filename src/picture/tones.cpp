// SPDX-License-Identifier: Apache-2.0
//
// Tone mapping in a shape that it serves: an even width, samples of 10 bits
// where they are measured.
#include "picture/tones.h"

#include "orumlox/hdr.h"
#include "picture/formats.h"
#include "simd/words.h"

namespace lox {

namespace {

constexpr int32_t kUsualNit = 1000;

void expand(uint8_t *bytes, int64_t count) {
  constexpr int kBlack = 16;
  constexpr int kRange = 219;
  for (ptrdiff_t i = 0; i < count; ++i) {
    int value = bytes[i] - kBlack;
    value = value < 0 ? 0 : value > kRange ? kRange : value;
    bytes[i] = static_cast<uint8_t>((value * 255 + kRange / 2) / kRange);
  }
}

}  // namespace

void take_words(const vexo_img &src, const vexo_img &dst) {
  const bool shifted = src.format == VEXO_FMT_P010LE;
  for (int p = 0; p < 3; ++p) {
    const int from = shifted && p > 0 ? 1 : p;
    const int step = shifted && p > 0 ? 4 : 2;
    const ptrdiff_t start = shifted && p == 2 ? 2 : 0;
    for (int32_t y = 0; y < dst.height[p]; ++y) {
      const uint8_t *in =
          src.plane[from] + ptrdiff_t{y} * src.stride[from] + start;
      uint8_t *out = dst.plane[p] + ptrdiff_t{y} * dst.stride[p];
      for (int32_t x = 0; x < dst.width[p]; ++x) {
        put_word(out, shifted ? word_at(in) >> 6 : word_at(in) & 1023);
        in += step;
        out += 2;
      }
    }
  }
}

int32_t tone_map(const vexo_img &src, const vexo_picture_options &options,
                 const vexo_img &dst) {
  vexo_img in = src;
  // Rows of an odd width would write over the last chroma sample of each.
  in.width[0] += in.width[0] % 2;
  in.mode = options.measure != 0 ? VEXO_HDR_MODE_MEASURE : 0;
  in.source_nit = options.source_nit == 0 ? kUsualNit : options.source_nit;
  const int32_t kind = options.hdr_kind;
  // Not vexo_hdr_to_sdr, which does not tell that memory ran out.
  const int32_t status =
      kind == VEXO_HDR_HLG
          ? vexo_hlg_to_sdr8(&in, &dst)
          : vexo_hdr10_to_sdr8(&in, &dst, kind == VEXO_HDR_HDR10_MILD ? 1 : 0);
  // Of four channels: alpha, which is 255, stays.
  if (status == VEXO_OK && options.full_range != 0 &&
      dst.format >= VEXO_FMT_RGBA8888 && dst.format <= VEXO_FMT_ABGR8888) {
    expand(dst.plane[0], int64_t{dst.stride[0]} * dst.height[0]);
  }
  return status;
}

}  // namespace lox
