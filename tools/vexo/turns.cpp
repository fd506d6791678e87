// SPDX-License-Identifier: Apache-2.0
//
// Names of turns, which layout and which words of a header survive one, and
// turns themselves.
#include "turns.h"

#include <limits>
#include <numeric>
#include <utility>

#include "error.h"
#include "orumlox/rot.h"

namespace vexo {
namespace {

// By code; the first has no name of its own.
constexpr const char *kTurns[] = {"0",    "left",   "right",
                                  "half", "mirror", "flip"};

// The layout of a picture that is turned or scaled. After a quarter turn what
// was half as wide is half as high.
const Layout &turned_layout(const Layout &layout, uint32_t rotation) {
  if (layout.tiled) return layout_of(VEXO_FMT_NV12);
  if (!is_quarter(rotation)) return layout;
  switch (layout.code) {
    case VEXO_FMT_YUV422N:
    case VEXO_FMT_YV16:
    case VEXO_FMT_UYVY:
    case VEXO_FMT_YUYV:
      return layout_of(VEXO_FMT_YUV422W);
    case VEXO_FMT_YUV422W:
      return layout_of(VEXO_FMT_YUV422N);
    default:
      return layout;
  }
}

// Of what a Y4M says before its chroma word the rate alone still holds: fields
// do not survive.
std::string rate_alone(const std::string &words) {
  const size_t start = words.find(" F");
  if (start == std::string::npos) return {};
  return words.substr(start, words.find(' ', start + 1) - start);
}

// num / den in numbers as small as can be.
Ratio reduced(int64_t num, int64_t den) {
  const int64_t common = std::gcd(num, den);
  num /= common;
  den /= common;
  constexpr int64_t kMost = std::numeric_limits<int>::max();
  while (num > kMost || den > kMost) {
    num = (num + 1) / 2;
    den = (den + 1) / 2;
  }
  return {static_cast<int>(num), static_cast<int>(den)};
}

class Turn : public Reshape {
 public:
  explicit Turn(uint32_t rotation) : rotation_(rotation) {}

  void announce(StreamInfo *info) override {
    int width = info->width;
    int height = info->height;
    if (is_quarter(rotation_)) std::swap(width, height);
    reshape_stream(info, rotation_, width, height);
  }

  void apply(const Frame &src, const Frame &dst) override {
    vexo_picture_options how = {};
    how.rotation = static_cast<int32_t>(rotation_);
    require_ok(vexo_picture_turn(context_.get(), &src.img(), &dst.img(), &how),
               "turn", src, dst);
  }

 private:
  uint32_t rotation_;
  const PictureContext context_;
};

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

double pixel_shape(const StreamInfo &info) {
  if (info.aspect.num < 1) return 1;
  return static_cast<double>(info.aspect.num) / info.aspect.den;
}

void reshape_stream(StreamInfo *info, uint32_t rotation, int width,
                    int height) {
  const bool quarter = is_quarter(rotation);
  if (info->aspect.num > 0) {
    // Sides have 15 bits, the ratio's numbers 31.
    const int64_t wide = int64_t{info->width} * (quarter ? width : height);
    const int64_t high = int64_t{info->height} * (quarter ? height : width);
    info->aspect = reduced(info->aspect.num * wide, info->aspect.den * high);
    if (quarter) std::swap(info->aspect.num, info->aspect.den);
  }
  info->layout = &turned_layout(*info->layout, rotation);
  info->width = width;
  info->height = height;
  info->y4m_words = rate_alone(info->y4m_words);
}

void set_square(StreamInfo *info) {
  if (info->aspect.num > 0) info->aspect = {1, 1};
}

std::unique_ptr<Reshape> make_turn(uint32_t rotation) {
  return std::make_unique<Turn>(rotation);
}

}  // namespace vexo
