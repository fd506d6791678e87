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
  // Of luma, of the two of chroma, and one; sums are shifted down.
  int16_t gain, y[2], u[2], v[2];
  int32_t y_last, u_last, v_last;
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
  rule.gain = static_cast<int16_t>(fixed(1.0 * to_one[0] / one[0]));
  // The last number brings zeros to their place, and rounds.
  const auto weigh = [&](int c, double of_u, double of_v, int16_t *weights,
                         int32_t *last) {
    weights[0] = static_cast<int16_t>(fixed(of_u * to_one[c] / one[1]));
    weights[1] = static_cast<int16_t>(fixed(of_v * to_one[c] / one[2]));
    *last = fixed(to_zero[c] + 0.5) - weights[0] * zero[1] -
            weights[1] * zero[2] - (c == 0 ? rule.gain * zero[0] : 0);
  };
  weigh(0, y_u, y_v, rule.y, &rule.y_last);
  weigh(1, (b - y_u) / to_b, -y_v / to_b, rule.u, &rule.u_last);
  weigh(2, -y_u / to_r, (r - y_v) / to_r, rule.v, &rule.v_last);
  return rule;
}

// So many samples of luma are done at a time.
constexpr int kStrip = 512;

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

  void get(ptrdiff_t y, ptrdiff_t x, ptrdiff_t count, int16_t *out) const {
    const Word *const in = at(y, x);
    const auto get_by = [&](ptrdiff_t step) {
      for (ptrdiff_t i = 0; i < count; ++i) {
        out[i] = static_cast<int16_t>(in[i * step] >> shift_ & most_);
      }
    };
    step_ == 1 ? get_by(1) : get_by(step_);
  }
  void put(ptrdiff_t y, ptrdiff_t x, ptrdiff_t count,
           const int32_t *sums) const {
    Word *const out = at(y, x);
    const auto put_by = [&](ptrdiff_t step) {
      for (ptrdiff_t i = 0; i < count; ++i) {
        const int32_t value = std::clamp(sums[i] >> Rule::kBits, 0, most_);
        out[i * step] = static_cast<Word>(value << shift_);
      }
    };
    step_ == 1 ? put_by(1) : put_by(step_);
  }

 private:
  Word *at(ptrdiff_t y, ptrdiff_t x) const {
    return reinterpret_cast<Word *>(first_ + y * stride_) + x * step_;
  }

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
  const ptrdiff_t x_shift = GST_VIDEO_FORMAT_INFO_W_SUB(format, 1);
  const ptrdiff_t rows = ptrdiff_t{1} << GST_VIDEO_FORMAT_INFO_H_SUB(format, 1);
  const ptrdiff_t width = img.width[0];
  const ptrdiff_t height = img.height[0];
  int16_t u[kStrip];
  int16_t v[kStrip];
  int16_t l[kStrip];
  int32_t sums[kStrip];
  int32_t more[kStrip];  // what chroma adds to each sample of luma
  const auto weigh = [&](ptrdiff_t count, const int16_t(&weights)[2],
                         int32_t last) {
    for (ptrdiff_t i = 0; i < count; ++i) {
      sums[i] = weights[0] * u[i] + weights[1] * v[i] + last;
    }
  };
  for (ptrdiff_t y = 0; y < height; y += rows) {
    for (ptrdiff_t x = 0; x < width; x += kStrip) {
      const ptrdiff_t count = std::min<ptrdiff_t>(kStrip, width - x);
      const ptrdiff_t shared = (count + x_shift) >> x_shift;
      const ptrdiff_t chroma_x = x >> x_shift;
      const ptrdiff_t chroma_y = y / rows;
      first.get(chroma_y, chroma_x, shared, u);
      second.get(chroma_y, chroma_x, shared, v);
      weigh(shared, rule.y, rule.y_last);
      for (ptrdiff_t i = 0; i < shared; ++i) {
        more[i << x_shift] = more[(i << x_shift) + x_shift] = sums[i];
      }
      for (ptrdiff_t r = y; r < std::min(y + rows, height); ++r) {
        luma.get(r, x, count, l);
        for (ptrdiff_t i = 0; i < count; ++i) {
          sums[i] = rule.gain * l[i] + more[i];
        }
        luma.put(r, x, count, sums);
      }
      weigh(shared, rule.u, rule.u_last);
      first.put(chroma_y, chroma_x, shared, sums);
      weigh(shared, rule.v, rule.v_last);
      second.put(chroma_y, chroma_x, shared, sums);
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
