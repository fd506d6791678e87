// SPDX-License-Identifier: Apache-2.0
//
// What the module gives the tool, from which it takes all else.
#include "av_module.h"

extern "C" __attribute__((visibility("default"))) const vexo::AvModule *
vexo_av_module() {
  static constexpr vexo::AvModule kModule = {
      vexo::read_video, vexo::video_facts, vexo::write_video};
  return &kModule;
}
