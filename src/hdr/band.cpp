// SPDX-License-Identifier: Apache-2.0
//
// Tone maps a band: its rows go in runs of pixels through the stages of
// hdr_rows.h, to where the destination's format has them.
#include "hdr/band.h"

#include <stdio.h>
#include <string.h>

#include "common/format.h"
#include "hdr/curves.h"
#include "hdr/hdr_rows.h"

namespace lox {

namespace {

// --- sources ----------------------------------------------------------------

// Where the next samples are, as HdrRows::ToCodes takes them.
struct Samples {
  const uint8_t *luma, *u, *v;
};

// Bytes from pixel to pixel in each plane; 0 where there is nothing to read.
struct Steps {
  int luma, u, v;
};

constexpr uint8_t kNoSamples[2 * kHdrRun] = {};

class Source {
 public:
  explicit Source(const vexo_img &img) : img_(img) {
    if (img.format == VEXO_FMT_P010LE) {
      steps_ = {2, 2, 0};
    } else if (img.format == VEXO_FMT_YUV420PLANAR16) {
      steps_ = {2, 1, 1};
    }
  }

  bool is_read() const { return steps_.luma != 0; }
  bool pairs() const { return steps_.u == 2; }

  Samples row(int32_t y) const {
    if (!is_read()) return {kNoSamples, kNoSamples, kNoSamples};
    // An odd byte of a stride does not count.
    const ptrdiff_t luma = ptrdiff_t{img_.stride[0] / 2} * 2 * y;
    const ptrdiff_t chroma = ptrdiff_t{img_.stride[1] / 2} * 2 * (y / 2);
    return {img_.plane[0] + luma, img_.plane[1] + chroma,
            pairs() ? kNoSamples : img_.plane[2] + chroma};
  }

  Samples advance(Samples s, int pixels) const {
    return {s.luma + ptrdiff_t{pixels} * steps_.luma,
            s.u + ptrdiff_t{pixels} * steps_.u,
            s.v + ptrdiff_t{pixels} * steps_.v};
  }

 private:
  const vexo_img &img_;
  Steps steps_ = {0, 0, 0};
};

// A copy of a run, filled up with zeros to whole groups.
struct PaddedSamples {
  uint8_t luma[2 * kHdrRun] = {};
  uint8_t u[2 * kHdrRun] = {};
  uint8_t v[kHdrRun] = {};

  Samples fill(Samples from, bool pairs, int pixels) {
    const auto n = static_cast<size_t>(pixels);
    const size_t chroma = (n + 1) / 2;
    memcpy(luma, from.luma, 2 * n);
    memcpy(u, from.u, (pairs ? 4 : 2) * chroma);
    if (!pairs) memcpy(v, from.v, 2 * chroma);
    return {luma, u, v};
  }
};

// --- destinations -----------------------------------------------------------

// Where the next pixels go: plane 0 and, in rows with chroma, u and v (pairs at
// u).
struct Target {
  uint8_t *plane0, *u, *v;
};

// How a destination of a format is written. `pixels` is null where nothing is
// written; of `pairs` and `planes` one at most is not null.
struct Kind {
  size_t pixel_bytes = 0;  // of plane 0
  // How far bands lie apart in plane 0: bytes for each pixel of a band.
  size_t band_bytes = 0;
  // Whether all bands begin at the start of the planes.
  bool overlapping = false;
  HdrRows::Put *pixels = nullptr;
  HdrRows::Put *pairs = nullptr;
  HdrRows::PutPlanes *planes = nullptr;
  int u_plane = 1, v_plane = 2;
};

Kind kind_of(int32_t format, const HdrRows &rows, int variant) {
  HdrRows::Put *const luma = rows.put_luma[variant];
  switch (format) {
    case VEXO_FMT_RGB888:
      // Quirk: bands are as far apart as those of four bytes, because callers'
      // buffers are laid out for that.
      return {3, 4, false, rows.put_rgb888};
    case VEXO_FMT_RGBA8888:
      return {4, 4, false, rows.put_rgba8888};
    case VEXO_FMT_ARGB8888:
      return {4, 4, false, rows.put_argb8888};
    case VEXO_FMT_YUV420:
      return {1, 1, false, luma, nullptr, rows.put_u_v[variant]};
    case VEXO_FMT_YV12:
      return {1, 1, true, luma, nullptr, rows.put_u_v[variant], 2, 1};
    case VEXO_FMT_NV12:
      return {1, 1, false, luma, rows.put_uv[variant]};
    case VEXO_FMT_NV21:
      return {1, 1, false, luma, rows.put_vu[variant]};
    default:
      return is_rgb(format) ? Kind{} : Kind{1, 1, true, luma};
  }
}

class Destination {
 public:
  Destination(const vexo_img &img, const HdrRows &rows, int variant)
      : img_(img), kind_(kind_of(img.format, rows, variant)) {}

  bool is_written() const { return kind_.pixels != nullptr; }

  // The target of row y of a band that begins at row `first`.
  Target row(int32_t y, int32_t first, int32_t width) const {
    const auto w = static_cast<size_t>(width);
    const size_t begin = kind_.overlapping ? 0 : first;
    Target to = {img_.plane[0] + kind_.band_bytes * w * begin +
                     kind_.pixel_bytes * w * static_cast<size_t>(y - first),
                 nullptr, nullptr};
    if (y % 2 != 0) return to;
    const size_t even_rows = y / 2 - (first + 1) / 2;
    const size_t samples = even_rows * w / 2;
    if (kind_.pairs != nullptr) {
      to.u = img_.plane[1] + w * begin / 2 + 2 * samples;
    } else if (kind_.planes != nullptr) {
      to.u = img_.plane[kind_.u_plane] + w * begin / 4 + samples;
      to.v = img_.plane[kind_.v_plane] + w * begin / 4 + samples;
    }
    return to;
  }

  Target advance(Target t, int pixels) const {
    t.plane0 += static_cast<size_t>(pixels) * kind_.pixel_bytes;
    if (t.u != nullptr) t.u += kind_.pairs != nullptr ? pixels : pixels / 2;
    if (t.v != nullptr) t.v += pixels / 2;
    return t;
  }

  void put(const HdrRun &run, Target to, int pixels) const {
    kind_.pixels(to.plane0, &run, pixels);
    if (to.u == nullptr) return;
    if (kind_.pairs != nullptr) {
      kind_.pairs(to.u, &run, pixels);
    } else {
      kind_.planes(to.u, to.v, &run, pixels);
    }
  }

  void copy(Target from, Target to, int pixels) const {
    const auto n = static_cast<size_t>(pixels);
    memcpy(to.plane0, from.plane0, n * kind_.pixel_bytes);
    if (to.u == nullptr) return;
    const size_t chroma = (n + 1) / 2;
    memcpy(to.u, from.u, kind_.pairs != nullptr ? 2 * chroma : chroma);
    if (to.v != nullptr) memcpy(to.v, from.v, chroma);
  }

 private:
  const vexo_img &img_;
  Kind kind_;
};

// --- rows -------------------------------------------------------------------

// Up to which light the gain does not change; see HdrRows::ToSdr.
int toe_of(const vexo_hdr_context &context) {
  const uint16_t *const gain = context.gain;
  if (gain[0] != 0) return 0;
  int last = 1;
  while (last < 256 && gain[last + 1] == gain[1]) ++last;
  return last * 128;
}

int variant_of(const vexo_hdr_context &context) {
  return context.variant != 0 ? 1 : 0;
}

class RowMapper {
 public:
  explicit RowMapper(const vexo_hdr_context &context)
      : context_(context),
        source_(*context.src),
        rows_(hdr_rows()),
        destination_(*context.dst, rows_, variant_of(context)),
        toe_(toe_of(context)),
        to_sdr_((look_ups() == LookUps::kGathers
                     ? rows_.to_sdr_gathering
                     : rows_.to_sdr)[context.hlg != 0][variant_of(context)]) {
    const HdrRegisterRows *const rows = rows_.in_registers;
    if (rows == nullptr || look_ups() != LookUps::kRegisters) return;
    // Callers' contexts may have a gamma of their own.
    if (memcmp(context.gamma, kGamma, sizeof kGamma) != 0) return;
    in_registers_ = rows->to_sdr[context.hlg != 0][variant_of(context)];
    rows->fill(&tables_, context);
  }

  const Destination &destination() const { return destination_; }

  void row(int32_t y, int32_t first) const {
    Samples from = source_.row(y);
    Target to = destination_.row(y, first, context_.width);
    for (int32_t left = context_.width; left > 0; left -= kHdrRun) {
      const int n = left < kHdrRun ? left : kHdrRun;
      if (n % rows_.group == 0) {
        run(from, to, n);
      } else {
        last_run(from, to, n);
      }
      from = source_.advance(from, n);
      to = destination_.advance(to, n);
    }
  }

 private:
  void run(Samples from, Target to, int n) const {
    HdrRun run;
    (source_.pairs() ? rows_.codes_of_p010 : rows_.codes_of_planar16)(
        &run, from.luma, from.u, from.v, n);
    if (in_registers_ != nullptr) {
      in_registers_(&run, tables_, n);
    } else {
      to_sdr_(&run, &context_, toe_, n);
    }
    destination_.put(run, to, n);
  }

  // A run that does not end with a whole group goes through buffers with room
  // for one.
  void last_run(Samples from, Target to, int n) const {
    PaddedSamples samples;
    uint8_t plane0[4 * kHdrRun];
    uint8_t u[kHdrRun];
    uint8_t v[kHdrRun];
    const Target padded = {plane0, to.u != nullptr ? u : nullptr, v};
    const int groups = (n + rows_.group - 1) / rows_.group;
    run(samples.fill(from, source_.pairs(), n), padded, groups * rows_.group);
    destination_.copy(padded, to, n);
  }

  const vexo_hdr_context &context_;
  Source source_;
  const HdrRows &rows_;
  Destination destination_;
  int toe_;
  HdrRows::ToSdr *to_sdr_;
  HdrRegisterRows::ToSdr *in_registers_ = nullptr;
  HdrTables tables_;
};

// Quirk: once for each chunk of a row, in these words, because callers look for
// them.
void report_unsupported(const vexo_hdr_context &context) {
  for (int32_t left = context.width; left > 0; left -= context.chunk) {
    fprintf(stderr, "_vexo_hdr10_to_sdr8(438): Unsupported Color Space [%d]\n",
            context.dst->format);
  }
}

}  // namespace

bool bands_overlap(int32_t dst_format) {
  return kind_of(dst_format, hdr_rows(), 0).overlapping;
}

bool maps_tones(int32_t src_format, int32_t dst_format) {
  vexo_img src = {};
  src.format = src_format;
  const Kind kind = kind_of(dst_format, hdr_rows(), 0);
  return Source(src).is_read() && kind.pixels != nullptr && !kind.overlapping;
}

}  // namespace lox

int32_t _vexo_hdr10_to_sdr8(const vexo_hdr_context *context, int32_t first,
                            int32_t end) {
  if (first < 0 || context->width < 1) return 0;
  const lox::RowMapper mapper(*context);
  const int32_t last = end < context->height ? end : context->height;
  for (int32_t y = first; y < last; ++y) {
    if (mapper.destination().is_written()) {
      mapper.row(y, first);
    } else {
      lox::report_unsupported(*context);
    }
  }
  return 0;
}
