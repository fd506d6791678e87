// SPDX-License-Identifier: Apache-2.0
//
// The final nit, and the tables and tone curve that a call works with.
#include "hdr/context.h"

#include <math.h>
#include <string.h>

#include "common/log.h"
#include "hdr/curves.h"
#include "hdr/hdr_rows.h"
#include "orumlox/unprefixed.h"

namespace lox {

namespace {

constexpr char kTag[] = "VEXO_HDR";

// To nearest, of values that are not negative.
int32_t rounded(double x) {
  const double raised = x + 0.5;
  return static_cast<int32_t>(raised);
}

// The straight beginning of the tone curve.
struct Toe {
  double slope, end;
};

Toe toe_for(int32_t nit) {
  switch (nit) {
    case 1000:
      return {2.0, 0.1};
    case 2000:
      return {3.7, 0.07};
    case 4000:
      return {7.5, 0.0375};
    default:
      return {10.0, 0.04};
  }
}

// The exponent and the coefficient let the curve continue where the toe ends.
void fill_tone_curve(vexo_hdr_context *c, Toe toe) {
  c->s = toe.slope;
  c->t = toe.end;
  c->knee = c->s * c->t;
  c->n = rounded(log(1 - c->knee) / log(1 - c->t));
  c->a = (c->knee - c->t) / (1 - pow(1 - c->t, c->n) - c->t);
}

void fill_pq(vexo_hdr_context *c) {
  for (int i = 0; i < 1024; ++i) {
    const double light = c->scale * kPqLight[i];
    c->pq[i] =
        static_cast<uint16_t>(rounded((light < 1.0 ? light : 1.0) * 32767));
  }
}

void fill_gain(vexo_hdr_context *c) {
  c->gain[0] = 0;
  for (int i = 1; i < 256; ++i) {
    const float x = static_cast<float>(i) / 255.0F;
    const double gain = TMO_VD_Norm(x, c->s, c->t, c->knee, c->n, c->a) / x;
    c->gain[i] = static_cast<uint16_t>(rounded(gain * 256));
  }
  // So that interpolating at the top needs no test.
  c->gain[256] = c->gain[255];
}

}  // namespace

int32_t choose_final_nit(vexo_img *src) {
  LOX_LOG_INFO(kTag, "source : %d, source_nit : %d\n", src->mode,
               src->source_nit);
  int32_t nit = 0;
  if (src->mode == VEXO_HDR_MODE_MEASURE) {
    nit = Analyze_SrcLuma(src->width[0], src->height[0],
                          reinterpret_cast<const uint16_t *>(src->plane[0]));
  } else {
    nit = src->source_nit <= 1500 ? 1000 : 4000;
  }
  src->source_nit = static_cast<int16_t>(nit);
  LOX_LOG_INFO(kTag, "final nit : %d\n", nit);
  return nit;
}

void build_hdr_context(vexo_hdr_context *context, const vexo_img *src,
                       const vexo_img *dst, int32_t nit, int32_t variant,
                       int32_t hlg) {
  vexo_hdr_context *const c = context;
  memset(c, 0, sizeof *c);
  c->width = src->width[0];
  c->height = src->height[0];
  c->scale = 10000.0 / nit;
  c->chunk = c->width % 32 == 0 ? 32 : c->width % 16 == 0 ? 16 : 8;
  c->variant = variant;
  c->hlg = hlg;
  fill_tone_curve(c, toe_for(nit));
  if (hlg != 0) {
    memcpy(c->hlg_linear, kHlgLinear, sizeof c->hlg_linear);
  } else {
    fill_pq(c);
  }
  fill_gain(c);
  memcpy(c->gamma, kGamma, sizeof c->gamma);
  c->src = src;
  c->dst = dst;
}

}  // namespace lox

double TMO_VD_Norm(double x, double s, double t, double /*knee*/, int32_t n,
                   double a) {
  if (x <= t) return s * x;
  return a * (1 - pow(1 - x, n)) + (1 - a) * x;
}

int32_t Analyze_SrcLuma(int32_t width, int32_t height, const uint16_t *luma) {
  // Quirk: rows are taken to be `width` samples apart, because the call knows
  // no stride.
  const int largest = lox::hdr_rows().largest_sample(luma, width, height,
                                                     width <= 2000 ? 2 : 4);
  LOX_LOG_INFO(lox::kTag, "maxY = %d, \n", largest);
  return largest <= 750 ? 1000 : largest <= 810 ? 2000 : 4001;
}
