// SPDX-License-Identifier: Apache-2.0
//
// The part of the tool that is linked to ffmpeg's libraries is a module of its
// own, which is loaded when a file wants it: they are more than a hundred, and
// loading them takes longer than most pictures do.
#pragma once

#include "video.h"

namespace vexo {

struct AvModule {
  decltype(&read_video) read;
  decltype(&video_facts) facts;
  decltype(&write_video) write;
};

// What the module's one symbol is.
using GetAvModule = const AvModule *();
constexpr const char kAvModuleFile[] = "libvexo_av.so";
constexpr const char kAvModuleSymbol[] = "vexo_av_module";

}  // namespace vexo
