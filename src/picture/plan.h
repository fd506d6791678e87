// SPDX-License-Identifier: Apache-2.0
//
// A call as stages, each of which makes a picture of the one before, and the
// last ones that were chosen: choosing takes longer than a small picture.
#pragma once

#include "orumlox/picture.h"
#include "picture/routes.h"

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

struct Plan {
  // Two chains, two stages between them and two copies.
  static constexpr int kMostStages = 2 * kMostConversions + 4;

  Stage stage[kMostStages];
  int count;
  // Of the picture that the last stage makes.
  int32_t width, height;

  void add(Work work, const Content &content, int32_t w, int32_t h) {
    stage[count++] = {work, {}, content, w, h};
    width = w;
    height = h;
  }
  // The conversions of a chain, at the size that pictures have there. Says
  // whether there is one.
  bool add(const Chain &chain) {
    for (int32_t i = 0; i < chain.count; ++i) {
      const Conversion &conversion = chain.conversion[i];
      stage[count++] = {Work::kConvert, conversion, conversion.to, width,
                        height};
    }
    return chain.cost != kNoWay;
  }
};

// What a plan follows from.
enum class Call : int32_t { kReshape, kToneMap, kThumbnail };
struct Question {
  Call call;
  Content from, to;
  int32_t src_width, src_height, dst_width, dst_height;
  vexo_picture_options options;
};

class RecentPlans {
 public:
  // Null where it is not among them.
  const Plan *find(const Question &question) const;
  // In place of the oldest.
  const Plan *keep(const Question &question, const Plan &plan);

 private:
  static constexpr uint32_t kMost = 4;

  Question question_[kMost];
  Plan plan_[kMost];
  uint32_t count_ = 0, next_ = 0;
};

}  // namespace lox
