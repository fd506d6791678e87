// SPDX-License-Identifier: Apache-2.0
//
// Names of turns, and which layout and which words of a header survive one.
#include "turns.h"

#include "error.h"
#include "orumlox/rot.h"

namespace vexo {
namespace {

// By code; the first has no name of its own.
constexpr const char *kTurns[] = {"0",    "left",   "right",
                                  "half", "mirror", "flip"};

// The layout of a turned picture: after a quarter turn what was half as wide is
// half as high.
const Layout &turned_layout(const Layout &layout, uint32_t rotation) {
  if (layout.tiled) {
    throw Error(std::string(layout.token) +
                " is neither scaled nor turned: convert it to nv12 first");
  }
  if (!is_quarter(rotation)) return layout;
  switch (layout.code) {
    case VEXO_FMT_YUV422N:
      return layout_of(VEXO_FMT_YUV422W);
    case VEXO_FMT_YUV422W:
      return layout_of(VEXO_FMT_YUV422N);
    case VEXO_FMT_YV16:
      throw Error("no layout holds yv16 after a quarter turn");
    default:
      return layout;
  }
}

// Of what a Y4M says before its chroma word the rate alone still holds: fields
// and the shape of pixels do not survive.
std::string rate_alone(const std::string &words) {
  const size_t start = words.find(" F");
  if (start == std::string::npos) return {};
  return words.substr(start, words.find(' ', start + 1) - start);
}

}  // namespace

uint32_t turn_named(const std::string &name, const char *option) {
  uint32_t code = VEXO_ROT_COPY;
  for (const char *const turn : kTurns) {
    if (name == turn || name == std::to_string(code)) return code;
    ++code;
  }
  throw Error(std::string(option) + " '" + name +
              "' is none of left, right, half, mirror, flip or 0 to 5");
}

bool is_quarter(uint32_t rotation) {
  return rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
}

void reshape_stream(StreamInfo *info, uint32_t rotation, int width,
                    int height) {
  info->layout = &turned_layout(*info->layout, rotation);
  info->width = width;
  info->height = height;
  info->y4m_words = rate_alone(info->y4m_words);
}

}  // namespace vexo
