// SPDX-License-Identifier: Apache-2.0
//
// The library's layouts and the memory of frames.
#include "frame.h"

#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "colour.h"
#include "error.h"
#include "nearest.h"

namespace vexo {
namespace {

std::vector<Layout> library_layouts() {
  std::vector<Layout> all;
  for (int32_t code = vexo_format_next(-1); code >= 0;
       code = vexo_format_next(code)) {
    all.push_back({code, vexo_format_name(code),
                   code >= VEXO_FMT_T64X32 && code <= VEXO_FMT_T256X16,
                   vexo_format_planes(code)});
  }
  return all;
}

}  // namespace

std::span<const Layout> all_layouts() {
  static const std::vector<Layout> all = library_layouts();
  return all;
}

const Layout &layout_of(int32_t code) {
  for (const Layout &layout : all_layouts()) {
    if (layout.code == code) return layout;
  }
  throw Error("no layout has the code " + std::to_string(code));
}

const Layout &layout_named(const std::string &token) {
  const int32_t code = vexo_format_of_name(token.c_str());
  if (code >= 0) return layout_of(code);
  std::vector<std::string> tokens;
  for (const Layout &layout : all_layouts()) tokens.emplace_back(layout.token);
  throw Error("unknown format '" + token + "'; 'vexo formats' lists them" +
              suggestion(token, tokens));
}

bool is_deep(const Layout &layout) {
  return layout.code == VEXO_FMT_YUV420PLANAR16 ||
         layout.code == VEXO_FMT_P010LE;
}

bool is_rgb(const Layout &layout) {
  return layout.code >= VEXO_FMT_RGB565 && !is_deep(layout);
}

void check_size(int64_t width, int64_t height, const std::string &where) {
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
    throw Error(where + ": size " + std::to_string(width) + "x" +
                std::to_string(height) + " is not within 1x1 to 32767x32767");
  }
}

Frame::Frame(const Layout &layout, int width, int height, int32_t color_std)
    : layout_(&layout), width_(width), height_(height) {
  check_size(width, height, layout.token);
  if (vexo_picture_bytes(layout.code, width, height, 1, &size_) != VEXO_OK ||
      vexo_picture_geometry(&img_, layout.code, width, height, 1) != VEXO_OK) {
    throw std::bad_alloc();
  }
  for (int p = 0; p < layout.planes; ++p) {
    row_bytes_[p] = img_.stride[p];
    if (int64_t{img_.stride[p]} * img_.buf_height[p] >
        std::numeric_limits<int32_t>::max()) {
      throw Error("a picture of " + std::to_string(width) + "x" +
                  std::to_string(height) + " " + layout.token +
                  " is too large: a plane has more than 2 GiB");
    }
  }
  // Untouched pages of a zeroed block cost nothing: a damaged header that
  // claims a huge picture does not make a huge process.
  constexpr size_t kAlignment = 64;
  size_t space = size_ + kAlignment;
  void *memory = std::calloc(space, 1);
  if (memory == nullptr) throw std::bad_alloc();
  kept_ = std::shared_ptr<const void>(
      memory, [memory](const void *) { std::free(memory); });
  whole_ = static_cast<uint8_t *>(std::align(kAlignment, size_, memory, space));
  vexo_picture_layout(&img_, layout.code, width, height, 1, whole_, size_);
  img_.color_std = color_std;
}

Frame::Frame(const vexo_img &img, std::shared_ptr<const void> kept)
    : layout_(&layout_of(img.format)),
      width_(img.width[0]),
      height_(img.height[0]),
      img_(img),
      kept_(std::move(kept)) {
  vexo_img dense = {};
  vexo_picture_geometry(&dense, img.format, width_, height_, 1);
  for (int p = 0; p < layout_->planes; ++p) row_bytes_[p] = dense.stride[p];
}

void require_ok(int32_t status, const std::string &what) {
  if (status == VEXO_OK) return;
  throw Error("the library refuses to " + what + ": " +
              vexo_status_name(status));
}

void require_ok(int32_t status, const char *what, const Frame &src,
                const Frame &dst) {
  if (status == VEXO_OK) return;
  std::string sentence = what;
  for (const auto &[word, frame] : {std::pair{" ", &src}, {" to ", &dst}}) {
    sentence.append(word).append(frame->layout().token).append(" of ");
    sentence.append(std::to_string(frame->width())).append("x");
    sentence.append(std::to_string(frame->height()));
  }
  require_ok(status, sentence);
}

vexo_img window_of(const Frame &frame, int x, int y, int width, int height) {
  const Layout &layout = frame.layout();
  if (!is_rgb(layout) && layout.code != VEXO_FMT_YUV400 &&
      layout.code != VEXO_FMT_YUV444) {
    x &= ~1;
    y &= ~1;
  }
  vexo_img window = {};
  vexo_picture_geometry(&window, layout.code, width, height, 1);
  // The strides of a picture as wide as what lies left of the window.
  vexo_img left = {};
  if (x > 0) vexo_picture_geometry(&left, layout.code, x, 1, 1);
  for (int p = 0; p < layout.planes; ++p) {
    const int64_t row = int64_t{y} * frame.rows(p) / frame.height();
    window.plane[p] = frame.row(p, static_cast<int>(row)) + left.stride[p];
    window.stride[p] = frame.img().stride[p];
  }
  window.color_std = frame.img().color_std;
  return window;
}

void blacken(const Frame &frame) {
  const bool full = is_full_range(frame.img().color_std);
  const bool grey = frame.layout().code == VEXO_FMT_YUV400;
  const bool rgb = is_rgb(frame.layout());
  for (int p = 0; p < frame.layout().planes; ++p) {
    const int value = rgb || grey ? 0 : p > 0 ? 128 : full ? 0 : 16;
    for (int y = 0; y < frame.rows(p); ++y) {
      std::memset(frame.row(p, y), value,
                  static_cast<size_t>(frame.row_bytes(p)));
    }
  }
  if (frame.layout().code != VEXO_FMT_RGBA8888) return;
  for (int y = 0; y < frame.height(); ++y) {
    uint8_t *const row = frame.row(0, y);
    for (int x = 3; x < frame.row_bytes(0); x += 4) row[x] = 255;
  }
}

PictureContext::PictureContext() {
  if (vexo_picture_context_new(&context_) != VEXO_OK) throw std::bad_alloc();
}

}  // namespace vexo
