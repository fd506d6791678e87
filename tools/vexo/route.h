// SPDX-License-Identifier: Apache-2.0
//
// The way of a frame from what the input holds to what the output does: changes
// of shape and conversions, one after the other.
#pragma once

#include <memory>
#include <vector>

#include "convert.h"

namespace vexo {

// One of VEXO_CHROMA_: how chroma is interpolated on a way, if it is.
int32_t interpolation(const Layout &from, const Layout &to,
                      const StreamInfo &info);

// Serves one thread: has its own memory.
class Route {
 public:
  // Throws Error where there is no way.
  Route(const StreamOptions &options, Kind kind, const StreamInfo &source,
        const MakeReshape &make, Hdr hdr);

  // Of the frames that come out.
  const StreamInfo &result() const { return steps_.back().info; }
  // Whether those are the ones that come in.
  bool changes() const { return steps_.size() > 1; }
  // A frame of the result's layout and size becomes what the source's is.
  void run(const Frame &source, const Frame &target);

 private:
  struct Step {
    StreamInfo info;
    // What makes it of the one before; null: a conversion.
    std::unique_ptr<Reshape> reshape;
  };

  void add(StreamInfo info, std::unique_ptr<Reshape> reshape);
  // Goes on by a conversion, if one is needed.
  void convert_to(const Layout &layout);
  void reshape(std::unique_ptr<Reshape> reshape);
  // How the library is to convert; chroma is interpolated where it is asked for
  // and where nothing else has the standard or the finer chroma.
  vexo_picture_options how(const Layout &from, const Layout &to,
                           const StreamInfo &info) const;
  void check_conversion(const Layout &from, const Layout &to) const;
  const Layout &choose_layout(Kind kind) const;
  void finish(const StreamOptions &options, Kind kind, const Layout &home);

  bool smooth_ = false;
  bool dither_ = false;
  // Whether the standard of what is written is the tool's to choose.
  bool chooses_ = false;
  std::vector<Step> steps_;
  std::vector<Frame> between_;
  PictureContext context_;
};

}  // namespace vexo
