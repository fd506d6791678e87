// SPDX-License-Identifier: Apache-2.0
//
// vexoconvert and vexothumbnail: their properties and what they are called.
#include "filter.h"

using namespace lox_gst;

namespace {

void set_property(GObject *object, guint id, const GValue *value,
                  GParamSpec *) {
  FilterState *const s = state_of(object);
  GST_OBJECT_LOCK(object);
  switch (id) {
    case kDirection:
      s->direction =
          static_cast<GstVideoOrientationMethod>(g_value_get_enum(value));
      break;
    case kMethod:
      s->method = g_value_get_enum(value);
      break;
    case kDither:
      s->dither = g_value_get_enum(value);
      break;
    case kThreads:
      s->threads = g_value_get_uint(value);
      break;
    case kAddBorders:
      s->add_borders = g_value_get_boolean(value);
      break;
    case kChroma:
      s->chroma = g_value_get_enum(value);
      break;
    default:
      s->prescale = g_value_get_enum(value);
      break;
  }
  GST_OBJECT_UNLOCK(object);
  filter_changed(object);
}

void get_property(GObject *object, guint id, GValue *value, GParamSpec *) {
  const FilterState &s = *state_of(object);
  GST_OBJECT_LOCK(object);
  switch (id) {
    case kDirection:
      g_value_set_enum(value, s.direction);
      break;
    case kMethod:
      g_value_set_enum(value, s.method);
      break;
    case kDither:
      g_value_set_enum(value, s.dither);
      break;
    case kThreads:
      g_value_set_uint(value, s.threads);
      break;
    case kAddBorders:
      g_value_set_boolean(value, s.add_borders);
      break;
    case kChroma:
      g_value_set_enum(value, s.chroma);
      break;
    default:
      g_value_set_enum(value, s.prescale);
      break;
  }
  GST_OBJECT_UNLOCK(object);
}

}  // namespace

void lox_gst::serve_properties(gpointer klass) {
  G_OBJECT_CLASS(klass)->set_property = set_property;
  G_OBJECT_CLASS(klass)->get_property = get_property;
}

void lox_gst::install_enum(gpointer klass, FilterProperty id, const char *name,
                           const char *blurb, const char *type,
                           const GEnumValue *values) {
  g_object_class_install_property(
      G_OBJECT_CLASS(klass), id,
      g_param_spec_enum(name, name, blurb, g_enum_register_static(type, values),
                        0, kFlags));
}

struct VexoConvert {
  VexoFilter parent;
};
struct VexoConvertClass {
  VexoFilterClass parent_class;
};
G_DEFINE_TYPE(VexoConvert, vexo_convert, vexo_filter_get_type())
static void vexo_convert_init(VexoConvert *) {}
static void vexo_convert_class_init(VexoConvertClass *klass) {
  serve_properties(klass);
  static const GEnumValue methods[] = {
      {0, "One to four samples an output", "bilinear"},
      {1, "Enlarges by weights of 64ths", "bilinear64"},
      {2, "Lanczos filters of three lobes", "lanczos"},
      {0, nullptr, nullptr}};
  install_enum(klass, kMethod, "method", "How pictures are scaled",
               "VexoScaleMethod", methods);
  static const GEnumValue dithers[] = {
      {0, "Low bits are left out", "none"},
      {1, "By an ordered pattern of 8 x 8", "bayer"},
      {0, nullptr, nullptr}};
  install_enum(klass, kDither, "dither", "How bits are left out", "VexoDither",
               dithers);
  g_object_class_install_property(
      G_OBJECT_CLASS(klass), kThreads,
      g_param_spec_uint("n-threads", "Threads",
                        "Threads that share a frame; 0: one a processor", 0,
                        G_MAXUINT, 1, kFlags));
  gst_element_class_set_static_metadata(
      GST_ELEMENT_CLASS(klass), "Video converter, scaler and turner",
      "Filter/Converter/Video/Scaler/Colorspace/Effect",
      "Converts, scales, turns and mirrors in one element",
      "orumlox developers");
}

struct VexoThumbnail {
  VexoFilter parent;
};
struct VexoThumbnailClass {
  VexoFilterClass parent_class;
};
G_DEFINE_TYPE(VexoThumbnail, vexo_thumbnail, vexo_filter_get_type())
static void vexo_thumbnail_init(VexoThumbnail *) {}
static void vexo_thumbnail_class_init(VexoThumbnailClass *klass) {
  klass->parent_class.makes_thumbnails = true;
  serve_properties(klass);
  static const GEnumValue factors[] = {{0, "No block means", "none"},
                                       {2, "Halved first", "2"},
                                       {4, "Quartered first", "4"},
                                       {0, nullptr, nullptr}};
  install_enum(klass, kPrescale, "prescale",
               "4:2:0 by block means first: faster and coarser", "VexoPrescale",
               factors);
  gst_element_class_set_static_metadata(
      GST_ELEMENT_CLASS(klass), "Thumbnail maker",
      "Filter/Converter/Video/Scaler",
      "Reduces by cosine transforms, in which every sample counts",
      "orumlox developers");
}
