// SPDX-License-Identifier: Apache-2.0
//
// vexo scale and vexo rotate: pictures of another size or another way up, in
// the layout that they come in. Only then are they converted to what the output
// holds.
#include "scale.h"

#include <utility>

#include "convert.h"
#include "error.h"
#include "orumlox/rot.h"
#include "orumlox/rsz.h"
#include "turns.h"

namespace vexo {
namespace {

void check_status(int32_t status, const char *what, const Frame &src,
                  const Frame &dst) {
  if (status == VEXO_OK) return;
  const auto size = [](const Frame &frame) {
    return std::to_string(frame.width()) + "x" + std::to_string(frame.height());
  };
  throw Error(std::string("the library refuses to ") + what + " " +
              src.layout().token + " from " + size(src) + " to " + size(dst) +
              " (status " + std::to_string(status) + ")");
}

class Scale : public Reshape {
 public:
  explicit Scale(const ScaleOptions &options)
      : mode_(options.mode1 ? VEXO_MODE_MOD1 : 0) {
    parse_size(options.size, "--size", &width_, &height_);
    if (!options.rotate.empty()) {
      rotation_ = turn_named(options.rotate, "--rotate");
    }
  }

  void announce(StreamInfo *info) const override {
    // The library would scale and silently leave the mirroring out.
    if (rotation_ > VEXO_ROT_180 &&
        (info->width != width_ || info->height != height_)) {
      throw Error(
          "--rotate mirrors only what keeps its size: scale, then "
          "vexo rotate");
    }
    reshape_stream(info, rotation_, width_, height_);
  }

  void apply(const Frame &src, const Frame &dst) override {
    vexo_img out = dst.img();
    // The library compares the codes, also where the planes of a turned layout
    // are another's.
    out.format = src.img().format;
    out.mode = mode_;
    if (rotation_ == VEXO_ROT_COPY) {
      check_status(vexo_rsz(&src.img(), &out), "scale", src, dst);
    } else {
      check_status(vexo_rsz_rot(&src.img(), rotation_, &out), "scale and turn",
                   src, dst);
    }
  }

 private:
  int width_ = 0;
  int height_ = 0;
  uint32_t rotation_ = VEXO_ROT_COPY;
  int32_t mode_;
};

class Rotate : public Reshape {
 public:
  explicit Rotate(const std::string &turn)
      : rotation_(turn_named(turn, "--turn")) {}

  void announce(StreamInfo *info) const override {
    int width = info->width;
    int height = info->height;
    if (is_quarter(rotation_)) std::swap(width, height);
    reshape_stream(info, rotation_, width, height);
  }

  void apply(const Frame &src, const Frame &dst) override {
    check_status(vexo_rot(&src.img(), rotation_, &dst.img()), "turn", src, dst);
  }

 private:
  uint32_t rotation_;
};

}  // namespace

void scale(const StreamOptions &streams, const ScaleOptions &options) {
  Scale reshape(options);
  convert(streams, &reshape);
}

void rotate(const StreamOptions &streams, const std::string &turn) {
  Rotate reshape(turn);
  convert(streams, &reshape);
}

}  // namespace vexo
