// SPDX-License-Identifier: Apache-2.0
//
// Runs a plan: where each stage's picture lies, copies for what the caller's
// pictures have no room for, and the calls themselves.
#pragma once

#include "orumlox/picture.h"
#include "picture/context.h"
#include "picture/plan.h"

namespace lox {

class Pipeline {
 public:
  Pipeline(const vexo_img &src, const vexo_img &dst,
           const vexo_picture_options &options, const Plan &plan);

  // Takes whatever memory is wanted, then works.
  int32_t run(vexo_picture_context *context);

 private:
  // The rows of a picture that are done together, all stages one after the
  // other: all of them, or few enough to stay in the near caches.
  struct Band {
    int32_t first, rows;
  };

  Content content_before(int i) const;
  bool reads_source() const;
  bool writes_destination() const;
  void complete();
  int32_t rows_of_bands() const;
  int32_t prepare(vexo_picture_context *context, int32_t rows) const;
  vexo_img output(const vexo_picture_context &context, int i,
                  const Band &band) const;
  int32_t work(vexo_picture_context *context, int i, vexo_img in,
               vexo_img out) const;
  int32_t work(vexo_picture_context *context, const Band &band) const;

  vexo_img src_, dst_;
  vexo_picture_options options_;
  Content from_;
  Plan plan_;
};

}  // namespace lox
