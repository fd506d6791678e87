// SPDX-License-Identifier: Apache-2.0
//
// Which conversions there are, and the best chain of them.
#pragma once

#include "csc/routes.h"
#include "orumlox/picture.h"
#include "picture/steps.h"

namespace lox {

// What samples are: a format and, where it has one, a colour standard.
struct Content {
  int32_t format, standard;

  bool operator==(const Content &) const = default;
};

// Whether a colour standard says what the format's samples mean. Grey has none:
// it becomes RGB as it is.
constexpr bool has_standard(int32_t format) {
  return (format > VEXO_FMT_YUV400 && format < 200) ||
         (format >= 600 && format < 700);
}
constexpr Content content_of(int32_t format, int32_t standard) {
  return {format, has_standard(format) ? standard : VEXO_STD_DEFAULT};
}

// Of chroma that every pixel has, instead of a siting.
constexpr int32_t kEveryPixelsOwn = -1;

// A conversion: a route of csc.h, a step of the picture layer or, without
// either, vexo_csc_new with chroma of this siting.
struct Conversion {
  const Route *route;
  Step *step;
  int32_t siting;
  Content to;

  bool is_new() const { return route == nullptr && step == nullptr; }
  bool interpolates() const { return is_new() && siting != kEveryPixelsOwn; }
};

// How the caller wants what can be made in several ways.
struct Manner {
  // One of VEXO_CHROMA_.
  int32_t chroma;
  // Chroma that is to be interpolated lies where it is said to no longer: no
  // YUV becomes RGB.
  bool turned;
  // What loses bits is dithered.
  bool dithers;
};

constexpr int kMostConversions = VEXO_MOST_STOPS - 1;
constexpr int32_t kNoWay = INT32_MAX;

// A cost is a number of passes, and more than any chain has of them for the
// least that is lost: nothing is lost to save passes.
constexpr int32_t kLeastLoss = 16;
constexpr int32_t passes_of(int32_t cost) { return cost % kLeastLoss; }
constexpr bool loses(int32_t cost) { return cost >= kLeastLoss; }
// 10 bits to 8, 8 to 5 or 6: dearer than all else that a chain may lose.
constexpr int32_t kFewerBits = 16 * kLeastLoss;

struct Chain {
  int32_t cost = 0;  // kNoWay where there is none
  int32_t count = 0;
  Conversion conversion[kMostConversions];
};

constexpr bool interpolates(const Chain &chain) {
  for (int32_t i = 0; i < chain.count; ++i) {
    if (chain.conversion[i].interpolates()) return true;
  }
  return false;
}

// The chain that loses least and then is the shortest; of equal ones always the
// same. Nothing to do where both are the same.
Chain find_chain(const Content &from, const Content &to, const Manner &manner);

// The costs of the chains from a content to all others, or to it from all
// others, by place.
constexpr int32_t kPlaces = 162;
struct Costs {
  int32_t of[kPlaces];
};
Costs costs_from(const Content &from, const Manner &manner);
Costs costs_to(const Content &to, const Manner &manner);
int32_t place_of(const Content &content);  // -1 for what is no content
Content content_at(int32_t place);

// Whether the conversion is right only for even sizes: of an odd one it is done
// at the next even size.
bool wants_even(const Conversion &conversion, const Content &from,
                int32_t width, int32_t height);

}  // namespace lox
