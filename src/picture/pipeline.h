// SPDX-License-Identifier: Apache-2.0
//
// A call as stages, each of which makes a picture of the one before.
#pragma once

#include "orumlox/picture.h"
#include "picture/context.h"

namespace lox {

enum class Work {
  kCopy,
  kConvert,
  kScale,
  kTurn,
  kScaleAndTurn,
  kThumbnail,
  // 10-bit words in rows of an even width without gaps, and what tone mapping
  // makes of them: rows likewise.
  kWords,
  kToneMap
};

struct Stage {
  Work work;
  Conversion conversion;
  // What it makes.
  Content content;
  int32_t width, height;
};

class Pipeline {
 public:
  Pipeline(const vexo_img &src, const vexo_img &dst,
           const vexo_picture_options &options);

  void add(Work work, const Content &content, int32_t width, int32_t height);
  // The conversions of a chain, at the size that pictures have there.
  void add(const Chain &chain);

  // Takes whatever memory is wanted, then works.
  int32_t run(vexo_picture_context *context);

 private:
  // Two chains, two stages between them and two copies.
  static constexpr int kMostStages = 2 * kMostConversions + 4;

  Content content_before(int i) const;
  bool reads_source() const;
  bool writes_destination() const;
  void complete();
  vexo_img output(const vexo_picture_context &context, int i) const;
  int32_t prepare(vexo_picture_context *context) const;
  int32_t work(vexo_picture_context *context, int i, vexo_img in,
               vexo_img out) const;

  vexo_img src_, dst_;
  vexo_picture_options options_;
  Content from_;
  Stage stages_[kMostStages];
  int count_ = 0;
  int32_t width_, height_;
};

}  // namespace lox
