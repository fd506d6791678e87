// SPDX-License-Identifier: Apache-2.0
//
// vexotonemap: PQ and HLG in 10 bits to 8 bits of BT.709. What is of neither
// passes as it is.
#include <gst/video/gstvideofilter.h>

#include <orumlox/hdr.h>

#include <initializer_list>

#include "caps.h"
#include "elements.h"
#include "site.h"

GST_DEBUG_CATEGORY_EXTERN(vexo_debug);
#define GST_CAT_DEFAULT vexo_debug

using namespace lox_gst;

struct VexoTonemap {
  GstVideoFilter parent;
  // Under the object's lock.
  guint nits;
  gboolean measure, mild;
  // The streaming thread's.
  guint stream_nits;
  bool hlg;
  Side in, out;
  vexo_picture_context *context;
};
struct VexoTonemapClass {
  GstVideoFilterClass parent_class;
};
G_DEFINE_TYPE(VexoTonemap, vexo_tonemap, GST_TYPE_VIDEO_FILTER)

namespace {

enum Property { kNits = 1, kMeasure, kMild };

constexpr const char *kHdr =
    "video/x-raw, format = (string) { P010_10LE, I420_10LE }, "
    "colorimetry = (string) { bt2100-pq, bt2100-hlg }";
constexpr const char *kMetadata[] = {"mastering-display-info",
                                     "content-light-level"};

VexoTonemap *self_of(gpointer object) {
  return reinterpret_cast<VexoTonemap *>(object);
}

// What may be made, and how it is named then: video in the range and curve of
// BT.709, pictures of RGB as screens take them.
GstCaps *results() {
  GstCaps *all = own_caps();
  const GValue *formats = all_formats();
  GValue yuv = G_VALUE_INIT;
  GValue rgb = G_VALUE_INIT;
  g_value_init(&yuv, GST_TYPE_LIST);
  g_value_init(&rgb, GST_TYPE_LIST);
  for (guint i = 0; i < gst_value_list_get_size(formats); ++i) {
    const GValue *name = gst_value_list_get_value(formats, i);
    const GstVideoFormat format =
        gst_video_format_from_string(g_value_get_string(name));
    const GstVideoFormatInfo *info = gst_video_format_get_info(format);
    // Of both sources the same formats can be made.
    if (vexo_picture_passes(VEXO_FMT_YUV420, VEXO_STD_BT709, format_of(format),
                            VEXO_STD_BT709, nullptr) == 0) {
      continue;
    }
    gst_value_list_append_value(
        GST_VIDEO_FORMAT_INFO_IS_YUV(info) ? &yuv : &rgb, name);
  }
  GstCaps *caps = gst_caps_copy(all);
  gst_caps_set_value(caps, "format", &yuv);
  gst_caps_set_simple(caps, "colorimetry", G_TYPE_STRING, "bt709", nullptr);
  gst_caps_set_value(all, "format", &rgb);
  gst_caps_set_simple(all, "colorimetry", G_TYPE_STRING, "sRGB", nullptr);
  gst_caps_append(caps, all);
  g_value_unset(&yuv);
  g_value_unset(&rgb);
  return caps;
}

// Each structure of the one caps with the size and rate of each of the other's.
GstCaps *with_sizes(const GstCaps *caps, const GstCaps *sizes) {
  GstCaps *result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(sizes); ++i) {
    for (guint j = 0; j < gst_caps_get_size(caps); ++j) {
      GstStructure *s = gst_structure_copy(gst_caps_get_structure(sizes, i));
      const GstStructure *other = gst_caps_get_structure(caps, j);
      for (const char *field : {"format", "colorimetry"}) {
        gst_structure_set_value(s, field,
                                gst_structure_get_value(other, field));
      }
      gst_structure_remove_fields(s, "chroma-site", kMetadata[0], kMetadata[1],
                                  nullptr);
      gst_caps_append_structure(result, s);
    }
  }
  return result;
}

GstCaps *transform_caps(GstBaseTransform *, GstPadDirection direction,
                        GstCaps *caps, GstCaps *filter) {
  GstCaps *hdr = gst_caps_from_string(kHdr);
  GstCaps *sdr = results();
  GstCaps *result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    GstCaps *one = gst_caps_copy_nth(caps, i);
    const bool sink = direction == GST_PAD_SINK;
    if (in_system_memory(one, 0)) {
      GstCaps *part = gst_caps_intersect(one, sink ? hdr : sdr);
      GstCaps *rest = gst_caps_subtract(one, hdr);
      gst_caps_append(result, with_sizes(sink ? sdr : hdr, part));
      gst_caps_unref(part);
      gst_caps_unref(one);
      one = rest;
    }
    gst_caps_append(result, one);
  }
  gst_caps_unref(hdr);
  gst_caps_unref(sdr);
  return filtered(result, filter);
}

// Chroma of the result is that of the pixels on the left and above, whatever
// the source's site.
GstCaps *fixate_caps(GstBaseTransform *, GstPadDirection direction,
                     GstCaps *caps, GstCaps *others) {
  GstCaps *result = gst_caps_fixate(others);
  Side from;
  Side to;
  if (direction == GST_PAD_SINK && side_of_caps(caps, &from) &&
      side_of_caps(result, &to) &&
      from.info.colorimetry.transfer != to.info.colorimetry.transfer) {
    describe_site(gst_caps_get_structure(result, 0),
                  site_made(make_side(GST_VIDEO_FORMAT_RGB, 0), to, {}, false),
                  false);
  }
  return result;
}

// The brightest that the stream says it has, or else that its display had.
guint peak_of(const GstCaps *caps) {
  GstVideoContentLightLevel level;
  GstVideoMasteringDisplayInfo display;
  if (gst_video_content_light_level_from_caps(&level, caps) &&
      level.max_content_light_level > 0) {
    return level.max_content_light_level;
  }
  constexpr guint kPerNit = 10000;
  return gst_video_mastering_display_info_from_caps(&display, caps)
             ? display.max_display_mastering_luminance / kPerNit
             : 0;
}

gboolean set_info(GstVideoFilter *filter, GstCaps *incaps, GstVideoInfo *,
                  GstCaps *outcaps, GstVideoInfo *) {
  VexoTonemap *const self = self_of(filter);
  const bool nothing = gst_caps_is_equal(incaps, outcaps) != FALSE;
  gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), nothing);
  if (nothing) return TRUE;
  if (!side_of_caps(incaps, &self->in) || !side_of_caps(outcaps, &self->out)) {
    return FALSE;
  }
  self->hlg =
      self->in.info.colorimetry.transfer == GST_VIDEO_TRANSFER_ARIB_STD_B67;
  self->stream_nits = peak_of(incaps);
  GST_DEBUG_OBJECT(filter, "%s, %u nits", self->hlg ? "HLG" : "PQ",
                   self->stream_nits);
  return self->context != nullptr ||
         vexo_picture_context_new(&self->context) == VEXO_OK;
}

GstFlowReturn transform_frame(GstVideoFilter *filter, GstVideoFrame *in,
                              GstVideoFrame *out) {
  VexoTonemap *const self = self_of(filter);
  const GstVideoRectangle whole = {0, 0, self->in.info.width,
                                   self->in.info.height};
  const bool rgb = !GST_VIDEO_INFO_IS_YUV(&self->out.info);
  vexo_picture_options options = {};
  GST_OBJECT_LOCK(filter);
  const guint nits = self->nits != 0 ? self->nits : self->stream_nits;
  options.source_nit = static_cast<int32_t>(nits);
  options.measure = self->measure ? 1 : 0;
  options.hdr_kind = self->hlg    ? VEXO_HDR_HLG
                     : self->mild ? VEXO_HDR_HDR10_MILD
                                  : VEXO_HDR_HDR10;
  GST_OBJECT_UNLOCK(filter);
  options.full_range = rgb ? 1 : 0;
  vexo_img src;
  vexo_img dst;
  const int32_t status =
      picture_of(*in, self->in, 0, whole, &src) &&
              picture_of(*out, self->out, rgb ? 0 : VEXO_STD_BT709, whole, &dst)
          ? vexo_picture_tonemap(self->context, &src, &dst, &options)
          : VEXO_ERR_ARG;
  if (status == VEXO_OK) return GST_FLOW_OK;
  GST_ELEMENT_ERROR(filter, STREAM, FORMAT, (nullptr),
                    ("%s", vexo_status_name(status)));
  return GST_FLOW_ERROR;
}

void set_property(GObject *object, guint id, const GValue *value,
                  GParamSpec *) {
  VexoTonemap *const self = self_of(object);
  GST_OBJECT_LOCK(object);
  switch (id) {
    case kNits:
      self->nits = g_value_get_uint(value);
      break;
    case kMeasure:
      self->measure = g_value_get_boolean(value);
      break;
    default:
      self->mild = g_value_get_boolean(value);
      break;
  }
  GST_OBJECT_UNLOCK(object);
}

void get_property(GObject *object, guint id, GValue *value, GParamSpec *) {
  VexoTonemap *const self = self_of(object);
  GST_OBJECT_LOCK(object);
  switch (id) {
    case kNits:
      g_value_set_uint(value, self->nits);
      break;
    case kMeasure:
      g_value_set_boolean(value, self->measure);
      break;
    default:
      g_value_set_boolean(value, self->mild);
      break;
  }
  GST_OBJECT_UNLOCK(object);
}

void finalize(GObject *object) {
  vexo_picture_context_free(self_of(object)->context);
  G_OBJECT_CLASS(vexo_tonemap_parent_class)->finalize(object);
}

}  // namespace

static void vexo_tonemap_init(VexoTonemap *) {}

static void vexo_tonemap_class_init(VexoTonemapClass *klass) {
  auto *const object = G_OBJECT_CLASS(klass);
  auto *const element = GST_ELEMENT_CLASS(klass);
  constexpr guint kMostNits = 10000;
  object->set_property = set_property;
  object->get_property = get_property;
  object->finalize = finalize;
  g_object_class_install_property(
      object, kNits,
      g_param_spec_uint("nits", "Nits",
                        "Peak of the source; 0: what the stream says, or 1000",
                        0, kMostNits, 0, kFlags));
  g_object_class_install_property(
      object, kMeasure,
      g_param_spec_boolean("measure", "Measure",
                           "Each frame's brightest luma chooses the curve",
                           FALSE, kFlags));
  g_object_class_install_property(
      object, kMild,
      g_param_spec_boolean("mild", "Mild", "Milder colours, of PQ", FALSE,
                           kFlags));
  add_pads(element, gst_caps_from_string(kHdr), results());
  GST_BASE_TRANSFORM_CLASS(klass)->transform_caps = transform_caps;
  GST_BASE_TRANSFORM_CLASS(klass)->fixate_caps = fixate_caps;
  GST_VIDEO_FILTER_CLASS(klass)->set_info = set_info;
  GST_VIDEO_FILTER_CLASS(klass)->transform_frame = transform_frame;
  gst_element_class_set_static_metadata(
      element, "HDR to SDR tone mapper", "Filter/Effect/Video",
      "Tone maps PQ and HLG to 8 bits of BT.709", "orumlox developers");
}
