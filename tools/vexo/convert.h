// SPDX-License-Identifier: Apache-2.0
//
// From one file of pictures to another, with a change of shape on the way if
// one is wanted.
#pragma once

#include <functional>
#include <memory>

#include "frame.h"
#include "streams.h"

namespace vexo {

// Scales, turns, tone maps or enhances each frame, before it is converted to
// what the output holds. Serves one thread.
class Reshape {
 public:
  virtual ~Reshape() = default;
  // The layout to which the input's frames are converted first: their own, or
  // one that the library's call takes.
  virtual const Layout &takes(const Layout &source) const { return source; }
  // Makes of what such frames are what they become: layout, size, colours and
  // the words that still hold. Before the first frame.
  virtual void announce(StreamInfo *info) = 0;
  virtual void apply(const Frame &src, const Frame &dst) = 0;
};

using MakeReshape = std::function<std::unique_ptr<Reshape>()>;

// Whether the input's HDR is left alone: by the command, or for what it does.
enum class Hdr { kMapped, kAsItIs };

// What the reader's frames are, but as the options want them taken.
StreamInfo taken_info(const StreamOptions &options, const FrameReader &reader);
Frame frame_of(const StreamInfo &info);

void convert(const StreamOptions &options, const MakeReshape &make = {},
             Hdr hdr = Hdr::kMapped);
// What is open already.
void convert(const StreamOptions &options,
             const std::shared_ptr<FrameReader> &reader,
             const MakeReshape &make, Hdr hdr = Hdr::kMapped);

}  // namespace vexo
