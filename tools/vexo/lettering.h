// SPDX-License-Identifier: Apache-2.0
//
// Words drawn into pictures, by FreeType.
#pragma once

#include <memory>
#include <string>

#include "frame.h"

namespace vexo {

class Lettering {
 public:
  // Of a font file; empty: one of those that systems usually have. Throws Error
  // when there is none, and where the program is built without FreeType.
  Lettering(const std::string &font, int pixels);
  ~Lettering();
  Lettering(const Lettering &) = delete;
  Lettering &operator=(const Lettering &) = delete;

  // In an rgb888 frame, white on a darkened ground, the lower right corner of
  // which is given.
  void draw(const std::string &text, const Frame &frame, int right,
            int bottom) const;

 private:
  struct Font;
  std::unique_ptr<Font> font_;
};

}  // namespace vexo
