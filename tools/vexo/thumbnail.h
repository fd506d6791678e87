// SPDX-License-Identifier: Apache-2.0
//
// Pictures reduced in the domain of the cosine transform, turned and fitted.
#pragma once

#include <memory>
#include <string>

#include "convert.h"

namespace vexo {

struct ThumbnailOptions : StreamOptions {
  // Exactly this, before the turn; or, keeping the aspect, within that.
  std::string size;
  std::string fit;
  // What is left of `fit` becomes black, or the picture is cut to fill it.
  bool letterbox = false;
  bool fill = false;
  std::string turn = "0";
  int prescale = 0;
};

std::unique_ptr<Reshape> make_thumbnail(const ThumbnailOptions &options);

}  // namespace vexo
