// SPDX-License-Identifier: Apache-2.0
#include "side.h"

#include <atomic>
#include <iterator>

namespace lox_gst {

namespace {

struct Pair {
  GstVideoFormat theirs;
  int32_t ours;
};

// Bytes without meaning (x) are alpha that is written and not looked at.
constexpr Pair kFormats[] = {
    {GST_VIDEO_FORMAT_NV12, VEXO_FMT_NV12},
    {GST_VIDEO_FORMAT_I420, VEXO_FMT_YUV420},
    {GST_VIDEO_FORMAT_YV12, VEXO_FMT_YV12},
    {GST_VIDEO_FORMAT_NV21, VEXO_FMT_NV21},
    {GST_VIDEO_FORMAT_RGBA, VEXO_FMT_RGBA8888},
    {GST_VIDEO_FORMAT_BGRA, VEXO_FMT_BGRA8888},
    {GST_VIDEO_FORMAT_ARGB, VEXO_FMT_ARGB8888},
    {GST_VIDEO_FORMAT_ABGR, VEXO_FMT_ABGR8888},
    {GST_VIDEO_FORMAT_RGBx, VEXO_FMT_RGBA8888},
    {GST_VIDEO_FORMAT_BGRx, VEXO_FMT_BGRA8888},
    {GST_VIDEO_FORMAT_xRGB, VEXO_FMT_ARGB8888},
    {GST_VIDEO_FORMAT_xBGR, VEXO_FMT_ABGR8888},
    {GST_VIDEO_FORMAT_RGB, VEXO_FMT_RGB888},
    {GST_VIDEO_FORMAT_BGR, VEXO_FMT_BGR888},
    {GST_VIDEO_FORMAT_YUY2, VEXO_FMT_YUYV},
    {GST_VIDEO_FORMAT_UYVY, VEXO_FMT_UYVY},
    {GST_VIDEO_FORMAT_Y42B, VEXO_FMT_YUV422N},
    {GST_VIDEO_FORMAT_Y444, VEXO_FMT_YUV444},
    {GST_VIDEO_FORMAT_RGB16, VEXO_FMT_RGB565},
    {GST_VIDEO_FORMAT_BGR16, VEXO_FMT_BGR565},
    {GST_VIDEO_FORMAT_GRAY8, VEXO_FMT_YUV400},
    {GST_VIDEO_FORMAT_P010_10LE, VEXO_FMT_P010LE},
    {GST_VIDEO_FORMAT_I420_10LE, VEXO_FMT_YUV420PLANAR16},
};

constexpr int kBt709From = 577;  // lines

bool is_yuv(const Side &side) { return GST_VIDEO_INFO_IS_YUV(&side.info); }
bool is_full(const Side &side) {
  return side.info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
}
bool is_rgb(int32_t format) { return format >= 200 && format < 600; }

int32_t standard_of(const GstVideoColorimetry &colours) {
  const bool full = colours.range == GST_VIDEO_COLOR_RANGE_0_255;
  switch (colours.matrix) {
    case GST_VIDEO_COLOR_MATRIX_BT601:
      return full ? VEXO_STD_BT601_FULL : VEXO_STD_DEFAULT;
    case GST_VIDEO_COLOR_MATRIX_BT709:
      return full ? VEXO_STD_BT709_FULL : VEXO_STD_BT709;
    case GST_VIDEO_COLOR_MATRIX_BT2020:
      return full ? VEXO_STD_BT2020_FULL : VEXO_STD_BT2020;
    default:
      return kNoStandard;
  }
}

// Curves that screens show alike: those of SDR, in which the library converts
// as all others do, PQ, and HLG.
int light_of(const GstVideoColorimetry &colours) {
  switch (colours.transfer) {
    case GST_VIDEO_TRANSFER_SMPTE2084:
      return 1;
    case GST_VIDEO_TRANSFER_ARIB_STD_B67:
      return 2;
    case GST_VIDEO_TRANSFER_GAMMA10:
      return 3;
    default:
      return 0;
  }
}

// Primaries likewise: those of BT.601 and BT.709 and those that nobody named
// are one gamut.
GstVideoColorPrimaries gamut_of(const Side &side) {
  const GstVideoColorPrimaries primaries = side.info.colorimetry.primaries;
  switch (primaries) {
    case GST_VIDEO_COLOR_PRIMARIES_UNKNOWN:
    case GST_VIDEO_COLOR_PRIMARIES_BT470M:
    case GST_VIDEO_COLOR_PRIMARIES_BT470BG:
    case GST_VIDEO_COLOR_PRIMARIES_SMPTE170M:
    case GST_VIDEO_COLOR_PRIMARIES_SMPTE240M:
      return GST_VIDEO_COLOR_PRIMARIES_BT709;
    default:
      return primaries;
  }
}

struct Passes {
  int32_t count;
  bool rgb;  // a format on the way is RGB
};

size_t place_of(int32_t format) {
  size_t i = 0;
  while (kFormats[i].ours != format) ++i;
  return i;
}

// A search takes some 15 us, and caps are asked for by the hundred.
Passes passes(int32_t from, int32_t from_std, int32_t to, int32_t to_std) {
  static std::atomic<int8_t> known[std::size(kFormats)][6][std::size(kFormats)]
                                  [6];
  // 0 and 1, 10 and 11, 20 and 21.
  const auto standard = [](int32_t s) {
    const auto number = static_cast<size_t>(s);
    return number % 2 + number / 10 * 2;
  };
  std::atomic<int8_t> &entry =
      known[place_of(from)][standard(from_std)][place_of(to)][standard(to_std)];
  int8_t value = entry.load(std::memory_order_relaxed);
  if (value == 0) {
    int32_t formats[VEXO_MOST_STOPS];
    const int32_t count =
        vexo_picture_passes(from, from_std, to, to_std, formats);
    bool rgb = false;
    for (int32_t i = 0; i <= count && count > 0; ++i) {
      rgb = rgb || is_rgb(formats[i]);
    }
    value = static_cast<int8_t>(1 + count * 2 + (rgb ? 1 : 0));
    entry.store(value, std::memory_order_relaxed);
  }
  return {(value - 1) / 2, (value - 1) % 2 != 0};
}

int chroma_halvings(const GstVideoFormatInfo *f) {
  return GST_VIDEO_FORMAT_INFO_IS_YUV(f) ? GST_VIDEO_FORMAT_INFO_W_SUB(f, 1) +
                                               GST_VIDEO_FORMAT_INFO_H_SUB(f, 1)
                                         : 0;
}

}  // namespace

const GValue *all_formats() {
  static const GValue list = [] {
    GValue formats = G_VALUE_INIT;
    g_value_init(&formats, GST_TYPE_LIST);
    for (const Pair &pair : kFormats) {
      append_name(&formats, gst_video_format_to_string(pair.theirs));
    }
    return formats;
  }();
  return &list;
}

void append_name(GValue *list, const char *name) {
  GValue value = G_VALUE_INIT;
  g_value_init(&value, G_TYPE_STRING);
  g_value_set_string(&value, name);
  gst_value_list_append_and_take_value(list, &value);
}

int32_t format_of(GstVideoFormat format) {
  for (const Pair &pair : kFormats) {
    if (pair.theirs == format) return pair.ours;
  }
  return -1;
}

Side make_side(GstVideoFormat format, int height) {
  Side side = {};
  gst_video_info_set_format(&side.info, format, 16, 16);
  side.format = format_of(format);
  if (is_yuv(side)) {
    set_colours(&side, height >= kBt709From ? "bt709" : "bt601");
  }
  return side;
}

void set_colours(Side *side, GstVideoColorimetry colours) {
  GstVideoColorimetry &own = side->info.colorimetry;
  if (colours.matrix == GST_VIDEO_COLOR_MATRIX_UNKNOWN) {
    colours.matrix = own.matrix;
  }
  if (colours.range == GST_VIDEO_COLOR_RANGE_UNKNOWN) colours.range = own.range;
  own = colours;
  side->standard = is_yuv(*side) ? standard_of(own) : 0;
}

void set_colours(Side *side, const char *name) {
  GstVideoColorimetry colours;
  if (name != nullptr && gst_video_colorimetry_from_string(&colours, name)) {
    set_colours(side, colours);
  }
}

bool side_of_caps(const GstCaps *caps, Side *side) {
  GstVideoInfo info;
  if (!gst_video_info_from_caps(&info, caps)) return false;
  *side = make_side(GST_VIDEO_INFO_FORMAT(&info), info.height);
  const GstStructure *s = gst_caps_get_structure(caps, 0);
  set_colours(side, gst_structure_get_string(s, "colorimetry"));
  const char *const site = gst_structure_get_string(s, "chroma-site");
  side->sited = site != nullptr;
  // GStreamer 1.22 forgets the site where no colours are named.
  if (side->sited) info.chroma_site = gst_video_chroma_site_from_string(site);
  info.colorimetry = side->info.colorimetry;
  side->info = info;
  return true;
}

GstVideoColorimetry usual_colours(const Side &from, bool labelled,
                                  const GstVideoFormatInfo *to) {
  const GstVideoFormatInfo *in = from.info.finfo;
  GstVideoColorimetry colours = from.info.colorimetry;
  if (GST_VIDEO_FORMAT_INFO_IS_YUV(in) == GST_VIDEO_FORMAT_INFO_IS_YUV(to) &&
      GST_VIDEO_FORMAT_INFO_IS_GRAY(in) == GST_VIDEO_FORMAT_INFO_IS_GRAY(to)) {
    return colours;
  }
  // YUV that is made of RGB is BT.601: the library's BT.709 has luma with too
  // much blue in it, which only those get who ask for it.
  const Side usual = make_side(GST_VIDEO_FORMAT_INFO_FORMAT(to), 0);
  // Light and primaries stay what they were said to be.
  colours.range = usual.info.colorimetry.range;
  colours.matrix = usual.info.colorimetry.matrix;
  return labelled ? colours : usual.info.colorimetry;
}

bool leads_to(const Side &from, const Side &to, Way *way) {
  const GstVideoColorimetry &a = from.info.colorimetry;
  const GstVideoColorimetry &b = to.info.colorimetry;
  int32_t *const standards = way->standards;
  standards[0] = standards[1] = 0;
  way->made = b;
  if (from.format < 0 || to.format < 0 || light_of(a) != light_of(b)) {
    return false;
  }
  const bool yuv = is_yuv(from);
  const bool kind = yuv == is_yuv(to) && GST_VIDEO_INFO_IS_GRAY(&from.info) ==
                                             GST_VIDEO_INFO_IS_GRAY(&to.info);
  if (kind && is_full(from) == is_full(to) && (!yuv || a.matrix == b.matrix)) {
    // Samples mean the same: no matrix, unless the way is by RGB.
    if (from.standard != kNoStandard) {
      standards[0] = standards[1] = from.standard;
    }
    const Passes all =
        passes(from.format, standards[0], to.format, standards[1]);
    return all.count > 0 && (from.standard != kNoStandard || !all.rgb || !yuv);
  }
  // By way of RGB, which is of full range, and so is grey that becomes it.
  if (from.standard == kNoStandard || to.standard == kNoStandard ||
      (!yuv && !is_full(from)) || (!is_yuv(to) && !is_full(to))) {
    return false;
  }
  standards[0] = from.standard;
  standards[1] = to.standard;
  const auto leads = [&] {
    return passes(from.format, standards[0], to.format, standards[1]).count > 0;
  };
  if (leads() || !is_yuv(to)) return leads();
  // Those of the source, or such as all RGB becomes.
  way->made = a;
  if (!yuv) {
    way->made.matrix = GST_VIDEO_COLOR_MATRIX_BT601;
    way->made.range = b.range;
  }
  standards[1] = standard_of(way->made);
  return leads();
}

int loss(const Side &from, const Side &to) {
  const GstVideoFormatInfo *in = from.info.finfo;
  const GstVideoFormatInfo *out = to.info.finfo;
  const int colours =
      (from.standard != to.standard && is_yuv(from) && is_yuv(to) ? 16 : 0) +
      (gamut_of(from) != gamut_of(to) ? 32 : 0);
  if (in == out) return colours;
  const int halved = chroma_halvings(out) - chroma_halvings(in);
  const int bits = static_cast<int>(GST_VIDEO_FORMAT_INFO_DEPTH(in, 0)) -
                   static_cast<int>(GST_VIDEO_FORMAT_INFO_DEPTH(out, 0));
  int sum = 1 + colours;
  if (GST_VIDEO_FORMAT_INFO_HAS_ALPHA(in) !=
      GST_VIDEO_FORMAT_INFO_HAS_ALPHA(out)) {
    sum += GST_VIDEO_FORMAT_INFO_HAS_ALPHA(in) ? 256 : 1;
  }
  if (bits > 0) sum += 64 * bits;
  if (halved > 0) sum += 16 * halved;
  if (is_yuv(from) != is_yuv(to)) sum += 8;
  return sum;
}

}  // namespace lox_gst
