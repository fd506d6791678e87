// SPDX-License-Identifier: Apache-2.0
//
// vexo scale and vexo rotate: what the command line asks for beyond the files.
#pragma once

#include <string>

#include "streams.h"

namespace vexo {

struct ScaleOptions {
  std::string size;
  // Empty: no turn.
  std::string rotate;
  bool mode1 = false;
};

void scale(const StreamOptions &streams, const ScaleOptions &options);
void rotate(const StreamOptions &streams, const std::string &turn);

}  // namespace vexo
