// SPDX-License-Identifier: Apache-2.0
//
// What is kept from call to call: memory, the plan of a thumbnail, the ways
// that were chosen last.
#pragma once

#include "orumlox/dct.h"
#include "picture/plan.h"

namespace lox {

// Memory that grows and is zeroed when it does.
class Scratch {
 public:
  bool reserve(size_t bytes);
  void release();
  uint8_t *data() const { return data_; }

 private:
  uint8_t *data_ = nullptr;
  size_t size_ = 0;
};

// The plan by which pictures of one geometry become thumbnails of another.
// RGBA8888 has planar forms of its own.
struct ThumbnailPlan {
  bool made = false;
  int32_t prescale = 0;
  vexo_img quartet[4] = {};
  vexo_rsz_new_context context = {};
  vexo_shift_set a = nullptr;
  vexo_shift_set b = nullptr;
  Scratch planar[2];

  // A plan for these pictures, the one that is there if it serves.
  int32_t make(const vexo_img &src, const vexo_img &dst, int32_t factor);
  void run(const vexo_img &src, const vexo_img &dst);
  void release();

 private:
  bool serves(const vexo_img &src, const vexo_img &dst, int32_t factor) const;
  int32_t plan_rgba();
};

}  // namespace lox

struct vexo_picture_context {
  // Stages write to one and read from the other.
  lox::Scratch scratch[2];
  lox::ThumbnailPlan thumbnail;
  lox::RecentPlans recent;
};
