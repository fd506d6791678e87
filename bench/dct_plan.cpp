// SPDX-License-Identifier: Apache-2.0
#include "bench/dct_plan.h"

#include <stdlib.h>  // posix_memalign

#include "orumlox/unprefixed.h"

namespace bench {

void DctPlan::Free::operator()(uint8_t *p) const { free(p); }

DctPlan::DctPlan(const Workload &workload, const Sizes &sizes)
    : workload_(workload),
      sizes_(sizes),
      img_{describe_src(workload, sizes, nullptr),
           describe_dst(workload, sizes, nullptr)} {
  int32_t status;
  if (is_rgba()) {
    const Size of[] = {sizes.src, sizes.dst};
    for (int i = 0; i < 2; ++i) {
      const auto describe_planes = [&](uint8_t *bytes) {
        return describe(VEXO_FMT_YUV444, of[i], bytes, 64);
      };
      const size_t bytes = frame_bytes(describe_planes(nullptr));
      void *room = nullptr;
      if (posix_memalign(&room, 64, bytes) != 0) abort();
      planes_[i].reset(static_cast<uint8_t *>(room));
      fill_noise(planes_[i].get(), bytes);  // which touches them
      img_[2 + i] = describe_planes(planes_[i].get());
    }
    status = vexo_rsz_new_rgba8888_init(img_, &context_, &a_, &b_);
  } else {
    status = vexo_rsz_new_init(img_, &context_, &a_, &b_, workload.prescale);
  }
  if (status != VEXO_OK) abort();
}

DctPlan::~DctPlan() {
  if (is_rgba()) {
    vexo_rsz_new_rgba8888_deinit(img_, &context_, a_, b_);
  } else {
    vexo_rsz_new_deinit(img_, &context_, a_, b_);
  }
}

bool DctPlan::has_workers() const {
  return is_rgba() || (context_.prescale != 0 && context_.exact_ratio == 0);
}

void DctPlan::run(uint8_t *src, uint8_t *dst) {
  img_[0] = describe_src(workload_, sizes_, src);
  img_[1] = describe_dst(workload_, sizes_, dst);
  if (is_rgba()) {
    vexo_rsz_new_rgba8888(img_, &context_, a_, b_);
  } else {
    vexo_rsz_new(&img_[0], &img_[1], &context_, a_, b_);
  }
}

void DctPlan::run_by_parts(uint8_t *src, uint8_t *dst) {
  const vexo_img &from = img_[2], &to = img_[3];
  vexo_csc_8b8b8b8b_unpack(src, from.width[0], from.height[0],
                           img_[0].stride[0], from.stride[0], from.stride[1],
                           from.stride[2], 0, from.plane[0], from.plane[1],
                           from.plane[2], nullptr);
  for (int32_t p = 0; p < 3; ++p) {
    dct_downscaling_rgba8888(from.plane[p], to.plane[p], &context_, a_, b_, p);
  }
  vexo_csc_8b8b8b8b_pack(dst, to.width[0], to.height[0], img_[1].stride[0],
                         to.stride[0], to.stride[1], to.stride[2], 0,
                         to.plane[0], to.plane[1], to.plane[2], nullptr);
}

}  // namespace bench
