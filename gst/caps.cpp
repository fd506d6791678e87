// SPDX-License-Identifier: Apache-2.0
#include "caps.h"

#include <climits>
#include <cmath>
#include <initializer_list>

#include "site.h"

namespace lox_gst {

namespace {

constexpr const char *kAspect = "pixel-aspect-ratio";
constexpr const char *kColours = "colorimetry";
constexpr const char *kSite = "chroma-site";

// GLib's macro casts const away.
bool holds(const GValue *value, GType type) {
  return value != nullptr && value->g_type == type;
}

// Calls visit(string) for each of a value's strings until one returns true.
template <class Visit>
bool any_of(const GValue *value, Visit visit) {
  if (holds(value, G_TYPE_STRING)) {
    return visit(g_value_get_string(value));
  }
  if (!holds(value, GST_TYPE_LIST)) return false;
  for (guint i = 0; i < gst_value_list_get_size(value); ++i) {
    if (any_of(gst_value_list_get_value(value, i), visit)) return true;
  }
  return false;
}

// The library's standards and the side's own, all of the side's light.
template <class Visit>
bool any_colours(const GstVideoColorimetry &own, Visit visit) {
  if (visit(own)) return true;
  for (const GstVideoColorMatrix matrix :
       {GST_VIDEO_COLOR_MATRIX_BT601, GST_VIDEO_COLOR_MATRIX_BT709,
        GST_VIDEO_COLOR_MATRIX_BT2020}) {
    for (const GstVideoColorRange range :
         {GST_VIDEO_COLOR_RANGE_16_235, GST_VIDEO_COLOR_RANGE_0_255}) {
      GstVideoColorimetry colours = own;
      colours.matrix = matrix;
      colours.range = range;
      if (visit(colours)) return true;
    }
  }
  return false;
}

// Whether the library leads from one to the other in some colours, or back.
bool converts(const Side &side, GstVideoFormat other, bool back) {
  GstVideoColorimetry own = side.info.colorimetry;
  Side end = make_side(other, 0);
  if (!GST_VIDEO_INFO_IS_YUV(&end.info)) {
    own.matrix = GST_VIDEO_COLOR_MATRIX_RGB;
    own.range = GST_VIDEO_COLOR_RANGE_0_255;
    if (!GST_VIDEO_INFO_IS_YUV(&side.info)) own = side.info.colorimetry;
  } else if (!GST_VIDEO_INFO_IS_YUV(&side.info)) {
    own.matrix = GST_VIDEO_COLOR_MATRIX_BT601;
    own.range = GST_VIDEO_COLOR_RANGE_16_235;
  }
  return any_colours(own, [&](const GstVideoColorimetry &colours) {
    Way way;
    set_colours(&end, colours);
    return back ? leads_to(end, side, &way) : leads_to(side, end, &way);
  });
}

// The formats on the other side of a structure, and whether colours are free
// there.
bool reachable(const GstStructure *s, bool back, GValue *list) {
  const GValue *colours = gst_structure_get_value(s, kColours);
  const GValue *formats = gst_structure_get_value(s, "format");
  int height = 0;
  gst_structure_get_int(s, "height", &height);
  bool free = false;
  any_of(all_formats(), [&](const char *name) {
    const GstVideoFormat other = gst_video_format_from_string(name);
    const bool found = any_of(
        formats == nullptr ? all_formats() : formats, [&](const char *own) {
          const GstVideoFormat format = gst_video_format_from_string(own);
          if (format_of(format) < 0) return false;
          const auto in_colours = [&](const char *said) {
            Side side = make_side(format, height);
            set_colours(&side, said);
            free = free || side.standard != kNoStandard;
            return converts(side, other, back);
          };
          return colours == nullptr ? in_colours(nullptr)
                                    : any_of(colours, in_colours);
        });
    if (found) append_name(list, name);
    return false;
  });
  return free;
}

void open_aspect(GstStructure *s) {
  gst_structure_set(s, kAspect, GST_TYPE_FRACTION_RANGE, 1, INT_MAX, INT_MAX, 1,
                    nullptr);
}

void exchange_sides(GstStructure *s) {
  const GValue *width = gst_structure_get_value(s, "width");
  const GValue *height = gst_structure_get_value(s, "height");
  if (width != nullptr && height != nullptr) {
    GValue kept = G_VALUE_INIT;
    g_value_init(&kept, width->g_type);
    g_value_copy(width, &kept);
    gst_structure_set_value(s, "width", height);
    gst_structure_take_value(s, "height", &kept);
  }
  int n = 0;
  int d = 0;
  if (gst_structure_get_fraction(s, kAspect, &n, &d) && n > 0) {
    gst_structure_set(s, kAspect, GST_TYPE_FRACTION, d, n, nullptr);
  } else if (gst_structure_has_field(s, kAspect)) {
    open_aspect(s);
  }
}

// The most that a side may have, or the least.
int bound_of(const GstStructure *s, const char *field, bool most) {
  const GValue *value = gst_structure_get_value(s, field);
  if (holds(value, G_TYPE_INT)) {
    return g_value_get_int(value);
  }
  if (!holds(value, GST_TYPE_INT_RANGE)) {
    return most ? INT_MAX : 1;
  }
  return most ? gst_value_get_int_range_max(value)
              : gst_value_get_int_range_min(value);
}

void open_size(GstStructure *s, const Shape &shape, bool back) {
  for (const char *field : {"width", "height"}) {
    int least = 1;
    int most = INT_MAX;
    if (shape.only_reduces) {
      (back ? least : most) = bound_of(s, field, !back);
    }
    if (least == most) {
      gst_structure_set(s, field, G_TYPE_INT, least, nullptr);
    } else {
      gst_structure_set(s, field, GST_TYPE_INT_RANGE, least, most, nullptr);
    }
  }
  if (gst_structure_has_field(s, kAspect)) open_aspect(s);
}

void append_general(GstCaps *caps, const GstStructure *from, bool back,
                    const Shape &shape) {
  GValue formats = G_VALUE_INIT;
  g_value_init(&formats, GST_TYPE_LIST);
  const bool free = reachable(from, back, &formats);
  if (gst_value_list_get_size(&formats) == 0) {
    g_value_unset(&formats);
    return;
  }
  GstStructure *s = gst_structure_copy(from);
  if (free) gst_structure_remove_field(s, kColours);
  gst_structure_remove_field(s, kSite);
  if (is_quarter(shape.turn)) exchange_sides(s);
  open_size(s, shape, back);
  gst_structure_take_value(s, "format", &formats);
  gst_caps_append_structure(caps, s);
}

// Width, height and aspect of a structure, as near to the picture's as it
// allows: what it leaves free keeps the picture's proportions.
void choose_size(GstStructure *s, int width, int height, int par_n, int par_d) {
  const double aspect = static_cast<double>(width) * par_n / height / par_d;
  const bool has_width =
      bound_of(s, "width", true) == bound_of(s, "width", false);
  const bool has_height =
      bound_of(s, "height", true) == bound_of(s, "height", false);
  if (!gst_structure_has_field(s, kAspect)) open_aspect(s);
  int n = 1;
  int d = 1;
  int w = width;
  int h = height;
  const auto nearest = [](GstStructure *in, const char *field, double wanted) {
    const double value = std::fmin(std::fmax(wanted, 1), INT_MAX);
    int found = 0;
    gst_structure_fixate_field_nearest_int(
        in, field, static_cast<int>(std::lround(value)));
    gst_structure_get_int(in, field, &found);
    return found;
  };
  if (has_width && has_height) {
    w = nearest(s, "width", w);
    h = nearest(s, "height", h);
    gst_util_double_to_fraction(aspect * h / w, &n, &d);
    // Without rounding where the picture keeps its size.
    if (w == width && h == height) n = par_n, d = par_d;
    gst_structure_fixate_field_nearest_fraction(s, kAspect, n, d);
    return;
  }
  gst_structure_fixate_field_nearest_fraction(s, kAspect, par_n, par_d);
  gst_structure_get_fraction(s, kAspect, &n, &d);
  const double ratio = aspect * d / n;  // of samples
  if (has_width) {
    w = nearest(s, "width", w);
    nearest(s, "height", w / ratio);
    return;
  }
  GstStructure *trial = gst_structure_copy(s);
  h = nearest(trial, "height", h);
  w = nearest(trial, "width", h * ratio);
  gst_structure_free(trial);
  // Where the width cannot be had, the height follows from the one that can.
  if (!has_height && std::fabs(w - h * ratio) > 1) {
    h = static_cast<int>(std::lround(w / ratio));
  }
  nearest(s, "width", w);
  nearest(s, "height", h);
}

// What is chosen of a structure: a format and, if it names any, colours.
struct Choice {
  int loss = INT_MAX;
  guint structure = 0;
  const char *format = nullptr;
  const char *colours = nullptr;
};

void consider(const Side &from, bool labelled, bool back, const GstCaps *others,
              guint i, Choice *best) {
  const GstStructure *s = gst_caps_get_structure(others, i);
  const GValue *colours = gst_structure_get_value(s, kColours);
  any_of(gst_structure_get_value(s, "format"), [&](const char *name) {
    const GstVideoFormat format = gst_video_format_from_string(name);
    const auto try_colours = [&](const char *said) {
      Side to = make_side(format, from.info.height);
      set_colours(&to, usual_colours(from, labelled, to.info.finfo));
      set_colours(&to, said);
      Way way;
      const bool leads = leads_to(back ? to : from, back ? from : to, &way);
      const int lost = loss(from, to);
      if (leads && lost < best->loss) *best = {lost, i, name, said};
      return false;
    };
    return colours == nullptr ? try_colours(nullptr)
                              : any_of(colours, try_colours);
  });
}

// Colours that follow from the input where the other side leaves them open.
void describe_colours(GstStructure *s, const Side &from, bool labelled) {
  const GstVideoFormatInfo *format = gst_video_format_get_info(
      gst_video_format_from_string(gst_structure_get_string(s, "format")));
  if (!gst_structure_has_field(s, kColours) &&
      (GST_VIDEO_FORMAT_INFO_IS_YUV(format) || labelled)) {
    const GstVideoColorimetry colours = usual_colours(from, labelled, format);
    gchar *name = gst_video_colorimetry_to_string(&colours);
    gst_structure_set(s, kColours, G_TYPE_STRING, name, nullptr);
    g_free(name);
  }
}

}  // namespace

bool in_system_memory(const GstCaps *caps, guint i) {
  const GstCapsFeatures *features = gst_caps_get_features(caps, i);
  // Features that may be any are equal to all others.
  return features == nullptr ||
         (!gst_caps_features_is_any(features) &&
          gst_caps_features_is_equal(features,
                                     GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY));
}

GstCaps *own_caps() {
  GstCaps *caps = gst_caps_from_string(
      "video/x-raw, width = (int) [ 1, max ], "
      "height = (int) [ 1, max ], "
      "framerate = (fraction) [ 0, max ]");
  gst_caps_set_value(caps, "format", all_formats());
  return caps;
}

void add_pads(GstElementClass *element, GstCaps *sink, GstCaps *src) {
  const auto add = [element](const char *name, GstPadDirection direction,
                             GstCaps *caps) {
    caps = gst_caps_merge(caps, gst_caps_from_string("video/x-raw(ANY)"));
    gst_element_class_add_pad_template(
        element, gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
  };
  add("sink", GST_PAD_SINK, sink);
  add("src", GST_PAD_SRC, src);
}

GstCaps *filtered(GstCaps *caps, GstCaps *filter) {
  if (filter == nullptr) return caps;
  GstCaps *part =
      gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
  gst_caps_unref(caps);
  return part;
}

GstCaps *other_caps(const GstCaps *caps, GstPadDirection direction,
                    const Shape &shape) {
  const bool back = direction == GST_PAD_SRC;
  GstCaps *result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    const GstStructure *s = gst_caps_get_structure(caps, i);
    GstCapsFeatures *features = gst_caps_get_features(caps, i);
    if (i > 0 && gst_caps_is_subset_structure_full(result, s, features)) {
      continue;
    }
    const bool ours = in_system_memory(caps, i);
    if (shape.turn.is_identity()) {
      // As it is, whatever it is.
      gst_caps_append_structure_full(
          result, gst_structure_copy(s),
          features == nullptr ? nullptr : gst_caps_features_copy(features));
    }
    if (ours) append_general(result, s, back, shape);
  }
  return result;
}

GstCaps *choose_caps(const GstCaps *caps, GstPadDirection direction,
                     GstCaps *others, const Shape &shape) {
  Side from;
  if (gst_caps_is_empty(others) || gst_caps_is_any(others)) return others;
  if (!side_of_caps(caps, &from)) return gst_caps_fixate(others);
  const GstStructure *in = gst_caps_get_structure(caps, 0);
  Choice best;
  if (in_system_memory(caps, 0)) {
    for (guint i = 0; i < gst_caps_get_size(others); ++i) {
      if (!in_system_memory(others, i)) continue;
      consider(from, gst_structure_has_field(in, kColours),
               direction == GST_PAD_SRC, others, i, &best);
    }
  }
  GstCaps *result = gst_caps_copy_nth(others, best.structure);
  if (best.format == nullptr) {
    gst_caps_unref(others);
    return gst_caps_fixate(result);
  }
  GstStructure *s = gst_caps_get_structure(result, 0);
  gst_structure_set(s, "format", G_TYPE_STRING, best.format, nullptr);
  if (best.colours != nullptr) {
    gst_structure_set(s, kColours, G_TYPE_STRING, best.colours, nullptr);
  }
  gst_caps_unref(others);
  const GstVideoInfo &info = from.info;
  if (is_quarter(shape.turn)) {
    choose_size(s, info.height, info.width, info.par_d, info.par_n);
  } else {
    choose_size(s, info.width, info.height, info.par_n, info.par_d);
  }
  describe_colours(s, from, gst_structure_has_field(in, kColours));
  result = gst_caps_fixate(result);
  Side to;
  if (direction == GST_PAD_SINK && side_of_caps(result, &to)) {
    describe_site(gst_caps_get_structure(result, 0),
                  site_made(from, to, shape.turn, shape.interpolates),
                  from.sited);
  }
  return result;
}

GstVideoRectangle place_in(const GstVideoInfo &in, const GstVideoInfo &out,
                           bool quarter) {
  double aspect =
      static_cast<double>(in.width) * in.par_n / in.height / in.par_d;
  if (quarter) aspect = 1 / aspect;
  const double ratio = aspect * out.par_d / out.par_n;  // of samples
  GstVideoRectangle place = {0, 0, out.width, out.height};
  const auto width = static_cast<int>(std::lround(out.height * ratio));
  const auto height = static_cast<int>(std::lround(out.width / ratio));
  if (width < out.width) place.w = width < 1 ? 1 : width;
  if (width >= out.width && height < out.height) {
    place.h = height < 1 ? 1 : height;
  }
  // Whole samples of chroma, as wide as two of luma.
  if (place.w < out.width) place.w += place.w % 2;
  if (place.h < out.height) place.h += place.h % 2;
  place.x = (out.width - place.w) / 4 * 2;
  place.y = (out.height - place.h) / 4 * 2;
  return place;
}

}  // namespace lox_gst
