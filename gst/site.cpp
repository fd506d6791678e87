// SPDX-License-Identifier: Apache-2.0
#include "site.h"

namespace lox_gst {

namespace {

constexpr auto kUnknown = GST_VIDEO_CHROMA_SITE_UNKNOWN;

bool is_yuv(const Side &side) { return GST_VIDEO_INFO_IS_YUV(&side.info); }
bool halves_columns(const Side &side) {
  return is_yuv(side) && GST_VIDEO_FORMAT_INFO_W_SUB(side.info.finfo, 1) != 0;
}
bool halves_rows(const Side &side) {
  return is_yuv(side) && GST_VIDEO_FORMAT_INFO_H_SUB(side.info.finfo, 1) != 0;
}
bool has(const Side &side, GstVideoChromaSite flag) {
  return (side.info.chroma_site & flag) != 0;
}
bool same_density(const Side &a, const Side &b) {
  return is_yuv(a) && is_yuv(b) && halves_columns(a) == halves_columns(b) &&
         halves_rows(a) == halves_rows(b);
}

// Whether every pixel has chroma of its own at first or on the way: YUV of
// another standard is made of RGB.
bool is_dense(const Side &from, const Side &to, bool interpolates) {
  Way way;
  return !halves_columns(from) || (interpolates && leads_to(from, to, &way) &&
                                   way.standards[0] != way.standards[1]);
}

GstVideoChromaSite site_of(bool left, bool top) {
  const int flags = (left ? GST_VIDEO_CHROMA_SITE_H_COSITED : 0) |
                    (top ? GST_VIDEO_CHROMA_SITE_V_COSITED : 0);
  return flags == 0 ? GST_VIDEO_CHROMA_SITE_NONE
                    : static_cast<GstVideoChromaSite>(flags);
}

// What lies on the left or upper one of two samples comes to lie on the right
// or lower one, for which there is no word, or remains.
GstVideoChromaSite turned(const Side &side, const Turn &turn) {
  enum Edge { kLeft, kTop, kRight, kBottom };
  // Where the left and the upper edge go, by rotation code.
  static constexpr Edge edges[][2] = {{kLeft, kTop},  {kBottom, kLeft},
                                      {kTop, kRight}, {kRight, kBottom},
                                      {kRight, kTop}, {kLeft, kBottom}};
  if (turn.is_identity()) return side.info.chroma_site;
  const Edge left = edges[turn.rotation][0];
  Edge top = edges[turn.rotation][1];
  if (turn.upside_down) top = static_cast<Edge>((top + 2) % 4);
  const bool on_left = has(side, GST_VIDEO_CHROMA_SITE_H_COSITED);
  const bool on_top = has(side, GST_VIDEO_CHROMA_SITE_V_COSITED);
  const auto lost = [](bool sited, Edge edge) {
    return sited && (edge == kRight || edge == kBottom);
  };
  if (side.info.chroma_site == kUnknown ||
      has(side, GST_VIDEO_CHROMA_SITE_ALT_LINE) || lost(on_left, left) ||
      lost(on_top, top) || (is_quarter(turn) && !halves_rows(side))) {
    return kUnknown;
  }
  return site_of((on_left && left == kLeft) || (on_top && top == kLeft),
                 (on_left && left == kTop) || (on_top && top == kTop));
}

}  // namespace

int32_t chroma_of(const Side &side) {
  return side.info.chroma_site == GST_VIDEO_CHROMA_SITE_NONE ||
                 side.info.chroma_site == GST_VIDEO_CHROMA_SITE_V_COSITED
             ? VEXO_CHROMA_CENTRE
             : VEXO_CHROMA_LEFT;
}

GstVideoChromaSite site_made(const Side &from, const Side &to, const Turn &turn,
                             bool interpolates) {
  if (!halves_columns(to) || GST_VIDEO_INFO_IS_GRAY(&from.info)) {
    return kUnknown;
  }
  const bool dense = is_dense(from, to, interpolates);
  if (!dense && same_density(from, to)) return turned(from, turn);
  if (!turn.is_identity() || (!dense && from.info.chroma_site == kUnknown)) {
    return kUnknown;
  }
  // Of denser chroma the left and upper sample is taken, but that of two rows
  // of YUY2 is the mean.
  const bool left = dense || has(from, GST_VIDEO_CHROMA_SITE_H_COSITED);
  const bool mean = !dense && from.format == VEXO_FMT_YUYV;
  return site_of(left, halves_rows(to) && !mean);
}

bool moves_chroma(const Side &from, const Side &to, const Turn &turn,
                  bool interpolates) {
  if (!from.sited || !to.sited || !same_density(from, to) ||
      is_dense(from, to, interpolates)) {
    return false;
  }
  const GstVideoChromaSite site = turned(from, turn);
  return site != kUnknown && site != to.info.chroma_site;
}

void describe_site(GstStructure *s, GstVideoChromaSite site, bool always) {
  const char *const format = gst_structure_get_string(s, "format");
  int width = 0;
  int height = 0;
  if (site == kUnknown || format == nullptr ||
      gst_structure_has_field(s, "chroma-site") ||
      !gst_structure_get_int(s, "width", &width) ||
      !gst_structure_get_int(s, "height", &height)) {
    return;
  }
  GstVideoInfo usual;
  if (!gst_video_info_set_format(&usual, gst_video_format_from_string(format),
                                 static_cast<guint>(width),
                                 static_cast<guint>(height)) ||
      (!always && site == usual.chroma_site)) {
    return;
  }
  gchar *const name = gst_video_chroma_site_to_string(site);
  gst_structure_set(s, "chroma-site", G_TYPE_STRING, name, nullptr);
  g_free(name);
}

}  // namespace lox_gst
