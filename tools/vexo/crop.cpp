// SPDX-License-Identifier: Apache-2.0
#include "crop.h"

#include <charconv>
#include <utility>

#include "error.h"

namespace vexo {
namespace {

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
    require_ok(vexo_picture_convert(nullptr, &window, &dst.img(), nullptr),
               "crop", src, dst);
  }

 private:
  std::string window_;
  int width_ = 0;
  int height_ = 0;
  int x_ = 0;
  int y_ = 0;
};

}  // namespace

std::unique_ptr<Reshape> make_crop(const std::string &window) {
  return std::make_unique<Crop>(window);
}

}  // namespace vexo
