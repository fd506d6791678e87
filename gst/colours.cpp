// SPDX-License-Identifier: Apache-2.0
#include "colours.h"

#include <algorithm>
#include <cmath>

namespace lox_gst {

namespace {

// Grey has no chroma in any standard. So luma changes by something of chroma,
// and chroma is made of chroma alone.
struct Rule {
  static constexpr int kBits = 14;
  // Of luma, the two of chroma, and one; sums are shifted down.
  int32_t y[4], u[3], v[3];
};

Rule make_rule(const GstVideoFormatInfo *format,
               const GstVideoColorimetry &from, const GstVideoColorimetry &to) {
  double red = 0;
  double blue = 0;
  double to_red = 0;
  double to_blue = 0;
  gst_video_color_matrix_get_Kr_Kb(from.matrix, &red, &blue);
  gst_video_color_matrix_get_Kr_Kb(to.matrix, &to_red, &to_blue);
  // What blue and red are above luma for a chroma of one, and what green then
  // is below it.
  const double b = 2 * (1 - blue);
  const double r = 2 * (1 - red);
  const double green = 1 - red - blue;
  const double to_green = 1 - to_red - to_blue;
  // By how much luma changes.
  const double y_u = to_blue * b - to_green * blue * b / green;
  const double y_v = to_red * r - to_green * red * r / green;
  const double to_b = 2 * (1 - to_blue);
  const double to_r = 2 * (1 - to_red);
  gint zero[GST_VIDEO_MAX_COMPONENTS];
  gint one[GST_VIDEO_MAX_COMPONENTS];
  gint to_zero[GST_VIDEO_MAX_COMPONENTS];
  gint to_one[GST_VIDEO_MAX_COMPONENTS];
  gst_video_color_range_offsets(from.range, format, zero, one);
  gst_video_color_range_offsets(to.range, format, to_zero, to_one);
  const auto fixed = [](double n) {
    return static_cast<int32_t>(std::lround(n * (1 << Rule::kBits)));
  };
  Rule rule = {};
  // Of luma, one part of chroma and the other; the last number brings zeros to
  // their place, and rounds.
  const auto weigh = [&](int c, double l, double u, double v, int32_t *out) {
    const double gain = to_one[c];
    const int32_t weights[] = {fixed(l * gain / one[0]),
                               fixed(u * gain / one[1]),
                               fixed(v * gain / one[2])};
    const int32_t last = fixed(to_zero[c] + 0.5) - weights[0] * zero[0] -
                         weights[1] * zero[1] - weights[2] * zero[2];
    if (c == 0) *out++ = weights[0];
    out[0] = weights[1];
    out[1] = weights[2];
    out[2] = last;
  };
  weigh(0, 1, y_u, y_v, rule.y);
  weigh(1, 0, (b - y_u) / to_b, -y_v / to_b, rule.u);
  weigh(2, 0, -y_u / to_r, (r - y_v) / to_r, rule.v);
  return rule;
}

// The samples of a component, those of more than 8 bits in words, which may
// have others around them.
template <class Word>
class Component {
 public:
  Component(const vexo_img &img, const GstVideoFormatInfo *format, int c)
      : plane_(GST_VIDEO_FORMAT_INFO_PLANE(format, c)),
        // GStreamer 1.22 has the second word of a pair at byte 1.
        first_(img.plane[plane_] +
               (GST_VIDEO_FORMAT_INFO_POFFSET(format, c) + sizeof(Word) - 1) /
                   sizeof(Word) * sizeof(Word)),
        stride_(img.stride[plane_]),
        step_(GST_VIDEO_FORMAT_INFO_PSTRIDE(format, c) /
              ptrdiff_t{sizeof(Word)}),
        shift_(GST_VIDEO_FORMAT_INFO_SHIFT(format, c)),
        most_((1 << GST_VIDEO_FORMAT_INFO_DEPTH(format, c)) - 1) {}

  Word *row(ptrdiff_t y) const {
    return reinterpret_cast<Word *>(first_ + y * stride_);
  }
  int32_t get(const Word *row, ptrdiff_t x) const {
    return row[x * step_] >> shift_ & most_;
  }
  void put(Word *row, ptrdiff_t x, int32_t sum) const {
    const int32_t value = std::clamp(sum >> Rule::kBits, 0, most_);
    row[x * step_] = static_cast<Word>(value << shift_);
  }

 private:
  guint plane_;
  uint8_t *first_;
  ptrdiff_t stride_, step_;
  guint shift_;
  int32_t most_;
};

template <class Word>
void change(const vexo_img &img, const GstVideoFormatInfo *format,
            const Rule &rule) {
  const Component<Word> luma(img, format, 0);
  const Component<Word> first(img, format, 1);
  const Component<Word> second(img, format, 2);
  const auto x_shift = GST_VIDEO_FORMAT_INFO_W_SUB(format, 1);
  const auto y_shift = GST_VIDEO_FORMAT_INFO_H_SUB(format, 1);
  const ptrdiff_t width = img.width[0];
  for (int32_t y = 0; y < img.height[0]; ++y) {
    Word *const row = luma.row(y);
    Word *const us = first.row(y >> y_shift);
    Word *const vs = second.row(y >> y_shift);
    for (ptrdiff_t x = 0; x < width; ++x) {
      luma.put(row, x,
               rule.y[0] * luma.get(row, x) +
                   rule.y[1] * first.get(us, x >> x_shift) +
                   rule.y[2] * second.get(vs, x >> x_shift) + rule.y[3]);
    }
    // Behind the last row that has this chroma.
    if (y + 1 < img.height[0] && (y + 1) >> y_shift == y >> y_shift) continue;
    for (ptrdiff_t x = 0; x < (width + x_shift) >> x_shift; ++x) {
      const int32_t u = first.get(us, x);
      const int32_t v = second.get(vs, x);
      first.put(us, x, rule.u[0] * u + rule.u[1] * v + rule.u[2]);
      second.put(vs, x, rule.v[0] * u + rule.v[1] * v + rule.v[2]);
    }
  }
}

}  // namespace

void change_colours(const vexo_img &img, const GstVideoFormatInfo *format,
                    const GstVideoColorimetry &from,
                    const GstVideoColorimetry &to) {
  const Rule rule = make_rule(format, from, to);
  if (GST_VIDEO_FORMAT_INFO_DEPTH(format, 0) > 8) {
    change<uint16_t>(img, format, rule);
  } else {
    change<uint8_t>(img, format, rule);
  }
}

}  // namespace lox_gst
