// SPDX-License-Identifier: Apache-2.0
// What is refused, what a chain of conversions makes pixel by pixel, and what
// the single calls make where one serves.
#include "cases/picture.h"

#include <orumlox/orumlox.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "rules/colours.h"
#include "rules/rules.h"
#include "rules/tiles.h"

namespace lox_test {
namespace {

bool has_words(int32_t format) {
  return format >= 600 || (format >= 200 && format < 300);
}
bool is_16(int32_t format) { return format >= 200 && format < 300; }
bool is_yuv(int32_t format) {
  return !is_rgb_code(format) && format != 0 && format < VEXO_FMT_RGBA1010102;
}

int32_t status_of_picture(const vexo_img &img) {
  const int32_t planes = vexo_format_planes(img.format);
  if (planes == 0) return VEXO_ERR_UNSUPPORTED;
  if (img.width[0] < 1 || img.height[0] < 1) return VEXO_ERR_ARG;
  const ExactImage image =
      picture_image(img.format, img.width[0], img.height[0]);
  for (int p = 0; p < planes; ++p) {
    if (img.plane[p] == nullptr) return VEXO_ERR_ARG;
    if (is_tiled_code(img.format)) continue;
    const int32_t stride = img.stride[p];
    if (std::abs(int64_t{stride}) < image[p].row_bytes) return VEXO_ERR_ARG;
    if (has_words(img.format) && stride % 2 != 0) return VEXO_ERR_ARG;
  }
  return VEXO_OK;
}

int32_t status_of_arguments(const vexo_img &src, const vexo_img &dst,
                            const vexo_picture_options *options) {
  for (const vexo_img *const img : {&src, &dst}) {
    const int32_t status = status_of_picture(*img);
    if (status != VEXO_OK) return status;
  }
  const bool known = options == nullptr ||
                     (options->rotation >= 0 && options->rotation <= 5 &&
                      options->source_nit >= 0 && options->hdr_kind != 3 &&
                      options->reserved[5] == 0);
  return known ? VEXO_OK : VEXO_ERR_ARG;
}

bool is_standard(int32_t number) {
  return std::find(std::begin(kPictureStandards), std::end(kPictureStandards),
                   number) != std::end(kPictureStandards);
}

// A side without a standard says nothing or what the other says.
bool standards_agree(const vexo_img &src, const vexo_img &dst) {
  if (is_yuv(src.format) && !is_standard(src.color_std)) return false;
  if (is_yuv(dst.format) && !is_standard(dst.color_std)) return false;
  if (is_yuv(src.format) == is_yuv(dst.format)) return true;
  const int32_t other = (is_yuv(src.format) ? dst : src).color_std;
  return other == 0 || src.color_std == dst.color_std;
}

// A picture between two conversions.
struct Stop {
  std::vector<uint8_t> memory[3];
  vexo_img img = {};

  Stop(int32_t format, int32_t width, int32_t height) {
    const ExactImage image = picture_image(format, width, height);
    img.format = format;
    for (int p = 0; p < 3; ++p) {
      img.width[p] = image[p].width;
      img.height[p] = image[p].height;
      img.stride[p] = static_cast<int32_t>(image[p].row_bytes);
      memory[p].resize(static_cast<size_t>(image[p].bytes(img.stride[p])));
      img.plane[p] = memory[p].data();
    }
  }
};

uint8_t *byte_of(const vexo_img &img, int p, int64_t y, int64_t x) {
  if (!is_tiled_code(img.format)) {
    return img.plane[p] + y * img.stride[p] + x;
  }
  // Tiles lie as those of the next even size.
  const int32_t width = 2 * half_up(img.width[0]);
  const int32_t rows = half_up(img.height[0]) * (p == 0 ? 2 : 1);
  return img.plane[p] + tile_byte(img.format, p > 0, width, rows, x, y);
}

// The number of `bits` bits that is nearest to n / 255; of 16 the half-float.
uint32_t widened(int n, int bits) {
  if (bits < 16) {
    return static_cast<uint32_t>(std::lround(n / 255.0 * ((1 << bits) - 1)));
  }
  if (n == 0) return 0;
  int exponent = 0;
  const double half = std::frexp(n / 255.0, &exponent);
  return static_cast<uint32_t>(((exponent + 14) << 10) +
                               std::lround((2 * half - 1) * 1024));
}

void widen_pixel(const vexo_img &src, const vexo_img &dst, int32_t x,
                 int32_t y) {
  const uint8_t *const in = byte_of(src, 0, y, int64_t{4} * x);
  const bool halves = dst.format == VEXO_FMT_RGBAF16;
  uint64_t word = 0;
  for (int i = 0; i < 4; ++i) {
    const int bits = halves ? 16 : i == 3 ? 2 : 10;
    word |= uint64_t{widened(in[i], bits)} << (halves ? 16 : 10) * i;
  }
  for (int i = 0; i < (halves ? 8 : 4); ++i) {
    *byte_of(dst, 0, y, int64_t{halves ? 8 : 4} * x + i) =
        static_cast<uint8_t>(word >> 8 * i);
  }
}

// Every pixel by itself, with the samples that are its own; of chroma that of
// the top left pixel stays. Only yuyv to yuv420 takes the mean of two rows.
void convert_pixel(const vexo_img &src, const vexo_img &dst, int32_t standard,
                   int32_t x, int32_t y) {
  if (dst.format >= VEXO_FMT_RGBA1010102) {
    widen_pixel(src, dst, x, y);
    return;
  }
  const bool rgb_from = is_rgb_code(src.format);
  const bool rgb_to = is_rgb_code(dst.format);
  Channels c = {};
  Yuv yuv = {};
  uint8_t alpha = 255;
  if (rgb_from) {
    const Rgb &in = rgb_layout(src.format);
    const uint8_t *const pixel = byte_of(src, 0, y, int64_t{x} * in.bytes);
    c = in.get(pixel);
    yuv = to_yuv(standard, c);
    if (in.alpha >= 0) alpha = pixel[in.alpha];
  } else {
    const auto sample = [&](const Place &p, int32_t row) -> int32_t {
      const uint8_t *const at = byte_of(src, p.plane, row >> p.y_shift,
                                        (x >> p.x_shift) * p.step + p.first);
      if (src.format < VEXO_FMT_YUV420PLANAR16) return *at;
      // What vexo_csc converts it cuts off.
      if (rgb_to) return *at;
      if (dst.format == VEXO_FMT_YUV420 &&
          src.format == VEXO_FMT_YUV420PLANAR16) {
        return ((at[0] | at[1] << 8) >> 2) & 255;
      }
      // Rounded from all their bits. Of P010LE the place is the high byte's.
      const int low = src.format == VEXO_FMT_P010LE ? -1 : 0;
      const int word = at[low] | at[low + 1] << 8;
      return std::min(
          src.format == VEXO_FMT_P010LE ? (word + 128) >> 8 : (word + 2) >> 2,
          255);
    };
    const YuvLayout &l = yuv_layout(src.format);
    yuv = {sample(l.y, y), sample(l.u, y), sample(l.v, y)};
    if (src.format == VEXO_FMT_YUYV && dst.format == VEXO_FMT_YUV420 &&
        y + 1 < src.height[0]) {
      yuv.u = (yuv.u + sample(l.u, y + 1)) >> 1;
      yuv.v = (yuv.v + sample(l.v, y + 1)) >> 1;
    }
    c = to_rgb(standard, yuv, x >= src.width[0] / 8 * 8);
    if (src.format == VEXO_FMT_YUV400) {
      c = {yuv.y << 8, yuv.y << 8, yuv.y << 8};
    }
  }
  if (rgb_to) {
    const Rgb &out = rgb_layout(dst.format);
    uint8_t *const pixel = byte_of(dst, 0, y, int64_t{x} * out.bytes);
    out.put(c, pixel);
    if (out.alpha >= 0) pixel[out.alpha] = alpha;
    return;
  }
  const auto put = [&](const Place &p, int32_t at, int32_t value) {
    if ((at >> p.x_shift) << p.x_shift != at) return;
    if ((y >> p.y_shift) << p.y_shift != y) return;
    *byte_of(dst, p.plane, y >> p.y_shift,
             (at >> p.x_shift) * p.step + p.first) =
        static_cast<uint8_t>(value);
  };
  const YuvLayout &l = yuv_layout(dst.format);
  put(l.y, x, yuv.y);
  put(l.u, x, yuv.u);
  put(l.v, x, yuv.v);
  // Tiles of an odd picture have black, 0, beyond it.
  if (is_tiled_code(dst.format)) {
    const bool more_x = x % 2 == 0 && x == src.width[0] - 1;
    const bool more_y = y % 2 == 0 && y == src.height[0] - 1;
    if (more_x) *byte_of(dst, 0, y, x + 1) = 0;
    if (more_y) *byte_of(dst, 0, y + 1, x) = 0;
    if (more_x && more_y) *byte_of(dst, 0, y + 1, x + 1) = 0;
    return;
  }
  // The pixel that an odd row of packed ones lacks.
  const bool packed =
      dst.format == VEXO_FMT_UYVY || dst.format == VEXO_FMT_YUYV;
  if (packed && x % 2 == 0 && x == src.width[0] - 1) put(l.y, x + 1, yuv.y);
}

void convert_pixels(const vexo_img &src, const vexo_img &dst,
                    int32_t standard) {
  for (int32_t y = 0; y < src.height[0]; ++y) {
    for (int32_t x = 0; x < src.width[0]; ++x) {
      convert_pixel(src, dst, standard, x, y);
    }
  }
}

void copy_picture(const vexo_img &src, const vexo_img &dst) {
  const ExactImage image =
      picture_image(src.format, src.width[0], src.height[0]);
  for (int p = 0; p < vexo_format_planes(src.format); ++p) {
    const bool tiled = image[p].whole > 0;
    move_rows(src.plane[p], src.stride[p],
              tiled ? image[p].whole : image[p].row_bytes,
              tiled ? 1 : image[p].height, dst.stride[p], dst.plane[p]);
  }
}

// Of a picture without gaps between its rows, and with nothing kept.
int32_t by_itself(const Function &function, vexo_picture_context *,
                  const vexo_img *src, const vexo_img *dst,
                  const vexo_picture_options *options) {
  const int32_t status = status_of_arguments(*src, *dst, options);
  if (status != VEXO_OK) return status;
  Stop dense(src->format, src->width[0], src->height[0]);
  dense.img.color_std = src->color_std;
  copy_picture(*src, dense.img);
  return reinterpret_cast<decltype(vexo_picture_turn) *>(function.address)(
      nullptr, &dense.img, dst, options);
}

// Whether vexo_csc_new makes RGB: where it was asked for, and where nothing
// else does.
bool is_new(int32_t from, int32_t standard, int32_t to, int32_t chroma) {
  const bool deep = to >= 700;
  const bool alone =
      (from >= 600 && deep) || (from == 3 && (deep || standard >= 20));
  return vexo_csc_new_supports(from, to, standard) != 0 &&
         (chroma != 0 || alone);
}

// Along the formats that the library says it goes through; of each step the
// standard is that of the side that has one. It changes where RGB is.
int32_t convert(const Function &function, vexo_picture_context *,
                const vexo_img *src, const vexo_img *dst,
                const vexo_picture_options *options) {
  const int32_t status = status_of_arguments(*src, *dst, options);
  if (status != VEXO_OK) return status;
  if (src->width[0] != dst->width[0] || src->height[0] != dst->height[0]) {
    return VEXO_ERR_ARG;
  }
  int32_t formats[VEXO_MOST_STOPS];
  const int32_t passes = vexo_picture_passes(
      src->format, src->color_std, dst->format, dst->color_std, formats);
  if (!standards_agree(*src, *dst) || passes == 0 ||
      (src->format == VEXO_FMT_T256X16 && dst->format != src->format &&
       src->width[0] <= 1280)) {
    return VEXO_ERR_UNSUPPORTED;
  }
  if (passes == 1 && src->format == dst->format) {
    copy_picture(*src, *dst);
    return VEXO_OK;
  }
  const int32_t chroma = options == nullptr ? 0 : options->chroma;
  const auto interpolate = [&](vexo_img from, const vexo_img &to) {
    from.color_std = src->color_std;
    from.reserved1 = chroma == VEXO_CHROMA_CENTRE;
    return vexo_csc_new(&from, &to);
  };
  const bool dithers = options != nullptr && options->dither != 0;
  if (chroma != 0 && is_yuv(src->format) != is_yuv(dst->format) &&
      !(dithers && is_16(dst->format)) &&
      is_new(src->format, src->color_std, dst->format, chroma)) {
    return interpolate(*src, *dst);
  }
  // What is dithered is that of RGBA8888, or words at once.
  if (dithers && src->width[0] >= 8 && src->height[0] >= 8) {
    const bool words = src->format >= 600 && src->format < 700 &&
                       is_yuv(dst->format) && dst->format < 100 &&
                       src->color_std == dst->color_std &&
                       vexo_format_planes(dst->format) > 1;
    vexo_img from = *src;
    vexo_img to = *dst;
    from.color_std = to.color_std = 0;
    if (words && vexo_csc_dither(&from, &to) == VEXO_OK) return VEXO_OK;
    const bool direct = is_16(dst->format) && !is_16(src->format) &&
                        src->format != VEXO_FMT_RGBA8888;
    if (direct && src->format != 0) {
      vexo_picture_options plain = *options;
      plain.dither = 0;
      Stop stop(VEXO_FMT_RGBA8888, src->width[0], src->height[0]);
      stop.img.color_std = dst->color_std;
      const int32_t made = by_itself(function, nullptr, src, &stop.img, &plain);
      return made != VEXO_OK ? made : vexo_csc_dither(&stop.img, dst);
    }
  }
  if (chroma != 0 || dithers) {
    return by_itself(function, nullptr, src, dst, options);
  }
  bool rgb = !is_yuv(src->format);
  vexo_img from = *src;
  std::vector<Stop> stops;
  for (int32_t i = 1; i <= passes; ++i) {
    stops.emplace_back(formats[i], src->width[0], src->height[0]);
    rgb = rgb || !is_yuv(formats[i]);
    const vexo_img to = i == passes ? *dst : stops.back().img;
    if (is_yuv(from.format) && !is_yuv(to.format) &&
        is_new(from.format, src->color_std, to.format, 0)) {
      interpolate(from, to);
      from = to;
      continue;
    }
    if (from.format >= 600 && to.format >= 600 && to.format < 700) {
      vexo_csc_deep(&from, &to);
      from = to;
      continue;
    }
    convert_pixels(from, to,
                   rgb && is_yuv(to.format) ? dst->color_std : src->color_std);
    from = to;
  }
  return VEXO_OK;
}

bool same_content(const vexo_img &src, const vexo_img &dst) {
  return src.format == dst.format &&
         (!is_yuv(src.format) || src.color_std == dst.color_std);
}

// Where one call does it.
template <class Call>
int32_t by_call(const Function &function, const vexo_img *src,
                const vexo_img *dst, const vexo_picture_options *options,
                bool serves, Call call) {
  const int32_t status = status_of_arguments(*src, *dst, options);
  if (status != VEXO_OK) return status;
  if (!standards_agree(*src, *dst)) return VEXO_ERR_UNSUPPORTED;
  return serves && same_content(*src, *dst)
             ? call()
             : by_itself(function, nullptr, src, dst, options);
}

int32_t turn(const Function &function, vexo_picture_context *,
             const vexo_img *src, const vexo_img *dst,
             const vexo_picture_options *options) {
  const auto code =
      static_cast<uint32_t>(options == nullptr ? 0 : options->rotation);
  const bool quarter = code == 1 || code == 2;
  const bool fits = code <= 5 &&
                    src->width[0] == (quarter ? dst->height : dst->width)[0] &&
                    src->height[0] == (quarter ? dst->width : dst->height)[0];
  // Of 4:2:2 no layout holds a quarter turn by itself.
  const bool serves =
      fits && code != 0 && vexo_rot_supports(src->format, code) != 0 &&
      !(quarter && (src->format == 2 || src->format == 5 || src->format == 8));
  return by_call(function, src, dst, options, serves,
                 [&] { return turn_picture(function, src, code, dst); });
}

int32_t scale(const Function &function, vexo_picture_context *,
              const vexo_img *src, const vexo_img *dst,
              const vexo_picture_options *options) {
  const bool serves =
      (options == nullptr || options->rotation == 0) &&
      (src->width[0] != dst->width[0] || src->height[0] != dst->height[0]) &&
      (options != nullptr && options->filter != 0
           ? vexo_rsz_apex_supports(src->format)
           : vexo_rsz_supports(src->format)) == 1;
  return by_call(function, src, dst, options, serves, [&] {
    vexo_img to = *dst;
    if (options != nullptr && options->filter != 0) {
      to.mode = 0;
      return vexo_rsz_apex_c(src, &to);
    }
    to.mode = options == nullptr ? 0 : options->mode;
    return vexo_rsz(src, &to);
  });
}

}  // namespace

std::vector<Rule> picture_rules() {
  return rules_for(vexo_picture_convert, convert, vexo_picture_turn, turn,
                   vexo_picture_scale, scale, vexo_picture_tonemap, by_itself,
                   vexo_picture_thumbnail, by_itself);
}

}  // namespace lox_test
