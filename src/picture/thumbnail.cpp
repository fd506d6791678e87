// SPDX-License-Identifier: Apache-2.0
//
// Plans of thumbnails: NV12, luma alone as NV12 without chroma, and RGBA8888.
#include <cstring>

#include "dct/plan.h"
#include "picture/context.h"
#include "picture/formats.h"

namespace lox {

namespace {

// The layout selector that takes pictures as they lie.
constexpr int32_t kAsTheyLie = 1;

bool same_geometry(const vexo_img &a, const vexo_img &b) {
  return a.format == b.format &&
         memcmp(a.width, b.width, sizeof a.width) == 0 &&
         memcmp(a.height, b.height, sizeof a.height) == 0 &&
         memcmp(a.stride, b.stride, sizeof a.stride) == 0 &&
         memcmp(a.buf_height, b.buf_height, sizeof a.buf_height) == 0;
}

// As the scaler is to see it.
vexo_img scaled_form(const vexo_img &img) {
  vexo_img result = img;
  if (img.format == VEXO_FMT_YUV400) {
    result.format = VEXO_FMT_NV12;
    result.width[1] = result.height[1] = 0;
    result.stride[1] = result.buf_height[1] = 0;
  }
  result.color_std = kAsTheyLie;
  return result;
}

bool is_served(const vexo_rsz_new_context &c, int32_t plane) {
  return written(&c, plane, *plane_notes(&c, plane)).width > 0;
}

}  // namespace

bool ThumbnailPlan::serves(const vexo_img &src, const vexo_img &dst,
                           int32_t factor) const {
  return made && prescale == factor && same_geometry(src, quartet[0]) &&
         same_geometry(dst, quartet[1]);
}

int32_t ThumbnailPlan::make(const vexo_img &src, const vexo_img &dst,
                            int32_t factor) {
  const vexo_img from = scaled_form(src);
  const vexo_img to = scaled_form(dst);
  if (serves(from, to, factor)) return VEXO_OK;
  release();
  quartet[0] = from;
  quartet[1] = to;
  prescale = factor;
  int32_t status = VEXO_OK;
  if (from.format == VEXO_FMT_RGBA8888) {
    status = plan_rgba();
  } else {
    status = vexo_rsz_new_init(quartet, &context, &a, &b, factor) == VEXO_OK
                 ? VEXO_OK
                 : VEXO_ERR_MEMORY;
  }
  if (status != VEXO_OK) return status;
  made = true;
  const bool chroma = from.width[1] > 0;
  if (context.exact_ratio == 0 &&
      (!is_served(context, 0) || (chroma && !is_served(context, 1)))) {
    release();
    return VEXO_ERR_UNSUPPORTED;
  }
  return VEXO_OK;
}

int32_t ThumbnailPlan::plan_rgba() {
  for (int i = 0; i < 2; ++i) {
    vexo_img &planes = quartet[2 + i];
    planes = {};
    planes.format = VEXO_FMT_YUV420;
    for (int p = 0; p < 3; ++p) {
      planes.width[p] = quartet[i].width[0];
      planes.height[p] = quartet[i].height[0];
    }
  }
  vexo_rsz_new_set_img(quartet + 2);
  for (int i = 0; i < 2; ++i) {
    vexo_img &planes = quartet[2 + i];
    const uint64_t bytes = static_cast<uint64_t>(planes.stride[0]) *
                           static_cast<uint64_t>(planes.buf_height[0]);
    if (bytes > PTRDIFF_MAX / 3 ||
        !planar[i].reserve(3 * static_cast<size_t>(bytes))) {
      return VEXO_ERR_MEMORY;
    }
    for (int p = 0; p < 3; ++p) {
      planes.plane[p] = planar[i].data() + static_cast<size_t>(bytes) * p;
    }
  }
  return vexo_rsz_new_rgba8888_init(quartet, &context, &a, &b) == VEXO_OK
             ? VEXO_OK
             : VEXO_ERR_MEMORY;
}

void ThumbnailPlan::run(const vexo_img &src, const vexo_img &dst) {
  quartet[0] = scaled_form(src);
  quartet[1] = scaled_form(dst);
  if (quartet[0].format == VEXO_FMT_RGBA8888) {
    vexo_rsz_new_rgba8888(quartet, &context, a, b);
  } else {
    vexo_rsz_new(&quartet[0], &quartet[1], &context, a, b);
  }
}

void ThumbnailPlan::release() {
  if (made) {
    if (quartet[0].format == VEXO_FMT_RGBA8888) {
      vexo_rsz_new_rgba8888_deinit(quartet, &context, a, b);
    } else {
      vexo_rsz_new_deinit(quartet, &context, a, b);
    }
  }
  made = false;
  for (Scratch &scratch : planar) scratch.release();
}

}  // namespace lox
