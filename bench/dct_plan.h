// SPDX-License-Identifier: Apache-2.0
//
// A reduction in the DCT domain, planned: what an application keeps between
// frames of one geometry. On the host and in the ARM guest alike.
#pragma once

#include <memory>

#include "bench/workloads.h"

namespace bench {

class DctPlan {
 public:
  // Ends the program when there is no memory.
  DctPlan(const Workload &workload, const Sizes &sizes);
  ~DctPlan();
  DctPlan(const DctPlan &) = delete;
  DctPlan &operator=(const DctPlan &) = delete;

  const vexo_rsz_new_context &context() const { return context_; }

  // Whether the call starts threads.
  bool has_workers() const;

  // One frame by the library's call.
  void run(uint8_t *src, uint8_t *dst);

  // A frame of RGBA8888 by the parts of that call, on this thread.
  void run_by_parts(uint8_t *src, uint8_t *dst);

 private:
  struct Free {
    void operator()(uint8_t *p) const;
  };

  bool is_rgba() const { return img_[0].format == VEXO_FMT_RGBA8888; }

  Workload workload_;
  Sizes sizes_;
  // Source and destination; of RGBA8888 those and their planar forms.
  vexo_img img_[4] = {};
  std::unique_ptr<uint8_t, Free> planes_[2];
  vexo_rsz_new_context context_;
  vexo_shift_set a_ = nullptr, b_ = nullptr;
};

}  // namespace bench
