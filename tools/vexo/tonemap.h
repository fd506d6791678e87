// SPDX-License-Identifier: Apache-2.0
//
// vexo tonemap: what the command line asks for beyond the files.
#pragma once

#include <string>

#include "streams.h"

namespace vexo {

struct TonemapOptions {
  std::string kind = "hdr10";
  int nit = 1000;
  bool measure = false;
};

void tonemap(const StreamOptions &streams, const TonemapOptions &options);

}  // namespace vexo
