// SPDX-License-Identifier: Apache-2.0
#include "upright.h"

#include <charconv>
#include <utility>

#include "error.h"
#include "orumlox/rot.h"
#include "turns.h"

namespace vexo {
namespace {

void check(int32_t status, const char *what, const Frame &frame) {
  if (status == VEXO_OK) return;
  throw Error(std::string("the library refuses to ") + what + " " +
              frame.layout().token + ": " + vexo_status_name(status));
}

class Upright : public Reshape {
 public:
  explicit Upright(uint32_t rotation) : rotation_(rotation) {}

  const Layout &takes(const Layout &source) const override {
    if (source.tiled || source.code == VEXO_FMT_P010LE) {
      return layout_of(VEXO_FMT_NV12);
    }
    if (source.code == VEXO_FMT_YV16) return layout_of(VEXO_FMT_YUV422N);
    if (vexo_rot_supports(source.code, rotation_) != 0) return source;
    return layout_of(source.code == VEXO_FMT_UYVY ||
                             source.code == VEXO_FMT_YUYV
                         ? VEXO_FMT_YUV422N
                         : VEXO_FMT_YUV420);
  }

  void announce(StreamInfo *info) override {
    int width = info->width;
    int height = info->height;
    if (is_quarter(rotation_)) {
      std::swap(width, height);
      if (info->aspect.num > 0) std::swap(info->aspect.num, info->aspect.den);
    }
    const Ratio aspect = info->aspect;
    reshape_stream(info, rotation_, width, height);
    info->aspect = aspect;
  }

  void apply(const Frame &src, const Frame &dst) override {
    check(vexo_rot(&src.img(), rotation_, &dst.img()), "turn", src);
  }

 private:
  uint32_t rotation_;
};

class Crop : public Reshape {
 public:
  explicit Crop(const std::string &window) : window_(window) {
    const char *at = window.data();
    const char *const end = at + window.size();
    bool sound = true;
    for (const auto &[value, mark] :
         {std::pair{&width_, 'x'}, {&height_, '+'}, {&x_, '+'}, {&y_, '\0'}}) {
      const auto read = std::from_chars(at, end, *value);
      sound = sound && read.ec == std::errc() && *value >= 0 &&
              (mark == '\0' ? read.ptr == end
                            : read.ptr != end && *read.ptr == mark);
      if (!sound) break;
      at = read.ptr + (mark != '\0');
    }
    if (!sound || width_ < 1 || height_ < 1) {
      throw Error("--crop '" + window + "' is not WIDTHxHEIGHT+X+Y");
    }
  }

  const Layout &takes(const Layout &source) const override {
    return source.tiled ? layout_of(VEXO_FMT_NV12) : source;
  }

  void announce(StreamInfo *info) override {
    if (int64_t{x_} + width_ > info->width ||
        int64_t{y_} + height_ > info->height) {
      throw Error(
          "--crop " + window_ + " reaches beyond the picture, which is " +
          std::to_string(info->width) + "x" + std::to_string(info->height));
    }
    info->width = width_;
    info->height = height_;
  }

  void apply(const Frame &src, const Frame &dst) override {
    const vexo_img window = window_of(src, x_, y_, width_, height_);
    check(vexo_picture_convert(nullptr, &window, &dst.img(), nullptr), "crop",
          src);
  }

 private:
  std::string window_;
  int width_ = 0;
  int height_ = 0;
  int x_ = 0;
  int y_ = 0;
};

}  // namespace

std::unique_ptr<Reshape> make_upright(uint32_t rotation) {
  return std::make_unique<Upright>(rotation);
}

std::unique_ptr<Reshape> make_crop(const std::string &window) {
  return std::make_unique<Crop>(window);
}

}  // namespace vexo
