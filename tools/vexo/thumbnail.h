// SPDX-License-Identifier: Apache-2.0
//
// vexo thumbnail: what the command line asks for beyond the files.
#pragma once

#include <string>

#include "streams.h"

namespace vexo {

struct ThumbnailOptions {
  std::string size;
  std::string turn = "0";
  int prescale = 0;
};

void thumbnail(const StreamOptions &streams, const ThumbnailOptions &options);

}  // namespace vexo
