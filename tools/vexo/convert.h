// SPDX-License-Identifier: Apache-2.0
//
// From one file of pictures to another, with a change of shape on the way if
// one is wanted.
#pragma once

#include "frame.h"
#include "streams.h"

namespace vexo {

// Scales, turns or tone maps each frame as it was read, before it is converted.
class Reshape {
 public:
  virtual ~Reshape() = default;
  // Makes of what the input's frames are what they become: layout, size and
  // the words that still hold.
  virtual void announce(StreamInfo *info) const = 0;
  virtual void apply(const Frame &src, const Frame &dst) = 0;
};

void convert(const StreamOptions &options, Reshape *reshape = nullptr);

}  // namespace vexo
