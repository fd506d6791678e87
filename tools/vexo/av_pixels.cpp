// SPDX-License-Identifier: Apache-2.0
//
// Frames of a decoder as the library's. What it has no layout for becomes the
// nearest one: samples of other depths are rounded to 8 bits or, of 4:2:0, to
// 10; chroma that is coarser than half is repeated; planes of RGB are packed.
#include <algorithm>
#include <vector>

#include "av.h"
#include "error.h"
#include "orumlox/adaptors/avframe.h"

namespace vexo {
namespace {

constexpr uint64_t kNoPicture =
    AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;

// What vexo_picture_of_avframe takes as it is; -1: nothing.
int32_t same_layout(AVPixelFormat format) {
  AVFrame frame = {};
  frame.format = format;
  int full;
  return vexo_format_of_avframe(&frame, &full);
}

struct Shift {
  int x, y;
};

Shift chroma_shift(int32_t code) {
  switch (code) {
    case VEXO_FMT_YUV444:
      return {0, 0};
    case VEXO_FMT_YUV422N:
      return {1, 0};
    case VEXO_FMT_YUV422W:
      return {0, 1};
    default:
      return {1, 1};
  }
}

// The planar layout of the same chroma, or -1.
int32_t planar_code(const AVPixFmtDescriptor &format) {
  switch (format.log2_chroma_w << 4 | format.log2_chroma_h) {
    case 0x00:
      return VEXO_FMT_YUV444;
    case 0x10:
    case 0x20:
      return VEXO_FMT_YUV422N;
    case 0x01:
      return VEXO_FMT_YUV422W;
    case 0x11:
      return format.comp[0].depth > 8 ? VEXO_FMT_YUV420PLANAR16
                                      : VEXO_FMT_YUV420;
    case 0x22:
      return VEXO_FMT_YUV420;
    default:
      return -1;
  }
}

// Samples of a component, at another depth.
class Depth {
 public:
  Depth(int from, int to, bool full)
      : shift_(from - to),
        most_from_((1 << from) - 1),
        most_((1 << to) - 1),
        full_(full) {}

  // Of the sum of `count` samples.
  int operator()(int64_t sum, int count) const {
    const int64_t whole = int64_t{count} * most_from_;
    // Full range ends with the largest number; limited keeps its powers of two.
    const int64_t value = full_ ? (2 * sum * most_ + whole) / (2 * whole)
                          : shift_ >= 0
                              ? (sum + (int64_t{count} << shift_) / 2) /
                                    (int64_t{count} << shift_)
                              : ((sum << -shift_) + count / 2) / count;
    return static_cast<int>(std::min<int64_t>(value, most_));
  }

 private:
  int shift_;
  int64_t most_from_;
  int64_t most_;
  bool full_;
};

// A component of a frame, row by row.
class Component {
 public:
  Component(const AVFrame &frame, int index)
      : frame_(frame),
        format_(*av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))),
        index_(index) {
    const bool chroma = (index == 1 || index == 2) &&
                        (format_.flags & AV_PIX_FMT_FLAG_RGB) == 0 &&
                        format_.nb_components > 2;
    shift_ = {chroma ? format_.log2_chroma_w : 0,
              chroma ? format_.log2_chroma_h : 0};
    width_ = AV_CEIL_RSHIFT(frame.width, shift_.x);
    height_ = AV_CEIL_RSHIFT(frame.height, shift_.y);
    row_.resize(static_cast<size_t>(width_));
  }

  Shift shift() const { return shift_; }
  int width() const { return width_; }
  int height() const { return height_; }
  bool palette() const { return (format_.flags & AV_PIX_FMT_FLAG_PAL) != 0; }
  int depth() const { return palette() ? 8 : format_.comp[index_].depth; }

  const uint16_t *row(int y) {
    const uint8_t *planes[4] = {frame_.data[0], frame_.data[1], frame_.data[2],
                                frame_.data[3]};
    av_read_image_line2(row_.data(), planes, frame_.linesize, &format_, 0, y,
                        index_, width_, palette() ? 1 : 0, 2);
    if (frame_.format == AV_PIX_FMT_MONOWHITE) {
      for (uint16_t &sample : row_) sample ^= 1;
    }
    return row_.data();
  }

 private:
  const AVFrame &frame_;
  const AVPixFmtDescriptor &format_;
  int index_;
  Shift shift_;
  int width_;
  int height_;
  std::vector<uint16_t> row_;
};

// A component into samples that lie `step` apart and have as much or less
// chroma, or more where that of the frame is coarser than any layout's.
void copy_component(Component from, Shift shift, const Depth &depth, Frame *to,
                    int plane, int offset, int step) {
  const bool words = to->layout().code == VEXO_FMT_YUV420PLANAR16;
  const int width = AV_CEIL_RSHIFT(to->width(), shift.x);
  const Shift fold = {std::max(shift.x - from.shift().x, 0),
                      std::max(shift.y - from.shift().y, 0)};
  const Shift repeat = {std::max(from.shift().x - shift.x, 0),
                        std::max(from.shift().y - shift.y, 0)};
  std::vector<int64_t> sums(static_cast<size_t>(from.width()));
  for (int y = 0; y < to->rows(plane); ++y) {
    std::fill(sums.begin(), sums.end(), 0);
    for (int i = 0; i < 1 << fold.y; ++i) {
      const int line =
          std::min(((y << fold.y) + i) >> repeat.y, from.height() - 1);
      const uint16_t *const row = from.row(line);
      for (size_t x = 0; x < sums.size(); ++x) sums[x] += row[x];
    }
    uint8_t *const row = to->row(plane, y);
    for (int x = 0; x < width; ++x) {
      int64_t sum = 0;
      for (int i = 0; i < 1 << fold.x; ++i) {
        const int column =
            std::min(((x << fold.x) + i) >> repeat.x, from.width() - 1);
        sum += sums[static_cast<size_t>(column)];
      }
      const int value = depth(sum, 1 << (fold.x + fold.y));
      if (words) {
        row[ptrdiff_t{2} * x] = static_cast<uint8_t>(value);
        row[ptrdiff_t{2} * x + 1] = static_cast<uint8_t>(value >> 8);
      } else {
        row[ptrdiff_t{x} * step + offset] = static_cast<uint8_t>(value);
      }
    }
  }
}

void copy_packed(const AVFrame &frame, const AVPixFmtDescriptor &format,
                 Frame *to) {
  const int step = to->layout().code == VEXO_FMT_RGBA8888 ? 4 : 3;
  const bool grey = format.nb_components < 3;
  for (int c = 0; c < step; ++c) {
    const int index = !grey ? c : c == 3 ? 1 : 0;
    Component component(frame, index);
    copy_component(component, {0, 0}, {component.depth(), 8, true}, to, 0, c,
                   step);
  }
}

void copy_planes(const AVFrame &frame, bool full, Frame *to) {
  const int32_t code = to->layout().code;
  const int depth = code == VEXO_FMT_YUV420PLANAR16 ? 10 : 8;
  for (int p = 0; p < to->layout().planes; ++p) {
    Component component(frame, p);
    copy_component(component, p == 0 ? Shift{0, 0} : chroma_shift(code),
                   {component.depth(), depth, full}, to, p, 0, 1);
  }
}

// YUV with alpha, which RGBA alone can hold.
void copy_with_alpha(const AVFrame &frame, const AVPixFmtDescriptor &format,
                     const Colour &colour, Frame *to) {
  const int32_t code =
      format.comp[0].depth > 8 && planar_code(format) == VEXO_FMT_YUV420PLANAR16
          ? VEXO_FMT_YUV420
          : planar_code(format);
  const int32_t color_std = standard_of(colour, frame.width, frame.height);
  Frame opaque(layout_of(code), frame.width, frame.height,
               color_std == kNoStandard ? VEXO_STD_BT709 : color_std);
  copy_planes(frame, colour.range == 2, &opaque);
  if (vexo_picture_convert(nullptr, &opaque.img(), &to->img(), nullptr) !=
      VEXO_OK) {
    throw Error("the library refuses a frame with alpha");
  }
  Component alpha(frame, 3);
  copy_component(alpha, {0, 0}, {alpha.depth(), 8, true}, to, 0, 3, 4);
}

}  // namespace

const Layout *layout_of_pixels(AVPixelFormat format, bool hdr) {
  const AVPixFmtDescriptor *const about = av_pix_fmt_desc_get(format);
  if (about == nullptr || (about->flags & kNoPicture) != 0 ||
      format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE) {
    return nullptr;
  }
  const int32_t same = same_layout(format);
  if (same >= VEXO_FMT_YUV420PLANAR16) return &layout_of(same);
  const bool alpha = (about->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  const bool rgb =
      (about->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
  if (hdr && !rgb && about->nb_components > 2) {
    return &layout_of(VEXO_FMT_YUV420PLANAR16);
  }
  if (same >= 0) return &layout_of(same);
  if (alpha) {
    const bool known =
        rgb || about->nb_components < 3 || planar_code(*about) >= 0;
    return known ? &layout_of(VEXO_FMT_RGBA8888) : nullptr;
  }
  if (rgb) return &layout_of(VEXO_FMT_RGB888);
  if (about->nb_components < 3) return &layout_of(VEXO_FMT_YUV400);
  const int32_t code = planar_code(*about);
  return code >= 0 ? &layout_of(code) : nullptr;
}

void take_frame(const AvFrame &from, const Colour &colour, Frame *to) {
  const auto pixels = static_cast<AVPixelFormat>(from->format);
  if (same_layout(pixels) == to->layout().code) {
    vexo_img img = {};
    if (vexo_picture_of_avframe(&img, from.get()) != VEXO_OK) {
      throw Error("a decoder's frame has planes that make no picture");
    }
    img.color_std = to->img().color_std;
    *to = Frame(img, from);
    return;
  }
  const AVPixFmtDescriptor &format = *av_pix_fmt_desc_get(pixels);
  const bool rgb =
      (format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
  if (!is_rgb(to->layout())) {
    const bool grey = to->layout().code == VEXO_FMT_YUV400;
    copy_planes(*from, grey || colour.range == 2, to);
  } else if (rgb || format.nb_components < 3) {
    copy_packed(*from, format, to);
  } else {
    copy_with_alpha(*from, format, colour, to);
  }
}

}  // namespace vexo
