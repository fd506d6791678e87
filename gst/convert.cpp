// SPDX-License-Identifier: Apache-2.0
//
// vexoconvert and vexothumbnail: what they negotiate, and what is done with a
// frame.
#include <gst/video/gstvideofilter.h>
#include <gst/video/gstvideometa.h>
#include <gst/video/navigation.h>
#include <gst/video/video.h>

#include <new>

#include "caps.h"
#include "elements.h"
#include "frame.h"
#include "runner.h"

GST_DEBUG_CATEGORY_EXTERN(vexo_debug);
#define GST_CAT_DEFAULT vexo_debug

using namespace lox_gst;

namespace {

struct State {
  // Under the object's lock: what was asked for.
  GstVideoOrientationMethod direction = GST_VIDEO_ORIENTATION_IDENTITY;
  GstVideoOrientationMethod tag = GST_VIDEO_ORIENTATION_IDENTITY;
  guint threads = 1;
  gboolean add_borders = TRUE;
  gint method = 0;
  gint dither = 0;
  gint prescale = 0;
  bool changed = false;

  // The streaming thread's: what is negotiated, and what follows from it.
  bool same_caps = false;
  Side in = {}, out = {};
  int32_t standards[2] = {};
  GstVideoRectangle place = {};
  Turn turn = {};
  vexo_picture_options options = {};
  Runner runner;
};

// One of the fields of an interlaced picture has whole rows of chroma.
bool has_fields(const Side &side) {
  return !GST_VIDEO_INFO_IS_YUV(&side.info) ||
         GST_VIDEO_FORMAT_INFO_H_SUB(side.info.finfo, 1) == 0 ||
         side.info.height % 4 == 0;
}

}  // namespace

struct VexoFilter {
  GstVideoFilter parent;
  State *state;
};
struct VexoFilterClass {
  GstVideoFilterClass parent_class;
  bool makes_thumbnails;
};

static void vexo_filter_direction(GstVideoDirectionInterface *) {}
G_DEFINE_ABSTRACT_TYPE_WITH_CODE(VexoFilter, vexo_filter, GST_TYPE_VIDEO_FILTER,
                                 G_IMPLEMENT_INTERFACE(GST_TYPE_VIDEO_DIRECTION,
                                                       vexo_filter_direction))

namespace {

enum Property {
  kDirection = 1,
  kMethod,
  kDither,
  kThreads,
  kAddBorders,
  kPrescale
};

VexoFilter *filter_of(gpointer object) {
  return reinterpret_cast<VexoFilter *>(object);
}
State *state_of(gpointer object) { return filter_of(object)->state; }
bool makes_thumbnails(gpointer object) {
  return reinterpret_cast<VexoFilterClass *>(G_OBJECT_GET_CLASS(object))
      ->makes_thumbnails;
}

Turn wanted_turn(gpointer object) {
  State *const s = state_of(object);
  GST_OBJECT_LOCK(object);
  const Turn turn = turn_of(
      s->direction == GST_VIDEO_ORIENTATION_AUTO ? s->tag : s->direction);
  GST_OBJECT_UNLOCK(object);
  return turn;
}

Shape shape_of(gpointer object) {
  const Turn turn = wanted_turn(object);
  return {turn.rotation != VEXO_ROT_COPY, is_quarter(turn),
          makes_thumbnails(object)};
}

int32_t run(gpointer object, const vexo_img &src, const vexo_img &dst) {
  State *const s = state_of(object);
  return makes_thumbnails(object) ? s->runner.thumbnail(src, dst, s->options)
                                  : s->runner.run(src, dst, s->options);
}

// Whether the library does it at these sizes: on black, in memory of its own.
bool is_done(gpointer object) {
  const State &s = *state_of(object);
  vexo_img src = {};
  vexo_img dst = {};
  int32_t status =
      vexo_picture_alloc(&src, s.in.format, s.in.info.width, s.in.info.height);
  if (status == VEXO_OK) {
    status = vexo_picture_alloc(&dst, s.out.format, s.place.w, s.place.h);
  }
  src.color_std = s.standards[0];
  dst.color_std = s.standards[1];
  if (status == VEXO_OK) status = run(object, src, dst);
  vexo_picture_free(&src);
  vexo_picture_free(&dst);
  if (status != VEXO_OK) {
    GST_ERROR_OBJECT(object, "%s %dx%d to %s %dx%d: %s",
                     GST_VIDEO_INFO_NAME(&s.in.info), s.in.info.width,
                     s.in.info.height, GST_VIDEO_INFO_NAME(&s.out.info),
                     s.place.w, s.place.h, vexo_status_name(status));
  }
  return status == VEXO_OK;
}

// From what is negotiated and asked for to what is done with each frame.
bool configure(gpointer object) {
  State *const s = state_of(object);
  s->turn = wanted_turn(object);
  GST_OBJECT_LOCK(object);
  s->changed = false;
  const bool borders = s->add_borders != FALSE;
  s->runner.set_threads(s->threads);
  s->options = {};
  s->options.rotation = s->turn.rotation;
  s->options.mode = s->method == 1 ? VEXO_MODE_MOD1 : 0;
  s->options.prescale = s->prescale;
  GST_OBJECT_UNLOCK(object);

  const GstVideoInfo &in = s->in.info;
  const GstVideoInfo &out = s->out.info;
  s->place = {0, 0, out.width, out.height};
  const bool turns = s->turn.rotation != VEXO_ROT_COPY;
  bool nothing = s->same_caps && !turns;
  if (!nothing) {
    if (!leads_to(s->in, s->out, s->standards)) {
      GST_ERROR_OBJECT(object, "the library does not convert these colours");
      return false;
    }
    if (borders) s->place = place_in(in, out, is_quarter(s->turn));
    const bool scales = in.width != out.width || in.height != out.height ||
                        s->place.w != out.width || s->place.h != out.height;
    nothing = !turns && !scales && in.finfo == out.finfo &&
              gst_video_colorimetry_is_equal(&in.colorimetry, &out.colorimetry);
    if ((turns || scales || makes_thumbnails(object)) && !is_done(object)) {
      return false;
    }
  }
  gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(object), nothing);
  return true;
}

gboolean set_info(GstVideoFilter *filter, GstCaps *incaps, GstVideoInfo *in,
                  GstCaps *outcaps, GstVideoInfo *out) {
  State *const s = state_of(filter);
  s->same_caps = gst_caps_is_equal(incaps, outcaps) != FALSE;
  if (!side_of_caps(incaps, &s->in) || !side_of_caps(outcaps, &s->out)) {
    return FALSE;
  }
  if (in->fps_n != out->fps_n || in->fps_d != out->fps_d ||
      in->interlace_mode != out->interlace_mode ||
      !same_sites(incaps, outcaps)) {
    GST_ERROR_OBJECT(filter,
                     "rates, interlacing and chroma sites are not changed");
    return FALSE;
  }
  return configure(filter) ? TRUE : FALSE;
}

GstCaps *transform_caps(GstBaseTransform *trans, GstPadDirection direction,
                        GstCaps *caps, GstCaps *filter) {
  GstCaps *result = other_caps(caps, direction, shape_of(trans));
  if (filter == nullptr) return result;
  GstCaps *part =
      gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
  gst_caps_unref(result);
  return part;
}

GstCaps *fixate_caps(GstBaseTransform *trans, GstPadDirection, GstCaps *caps,
                     GstCaps *others) {
  return choose_caps(caps, others, shape_of(trans));
}

void before_transform(GstBaseTransform *trans, GstBuffer *) {
  State *const s = state_of(trans);
  GST_OBJECT_LOCK(trans);
  const bool changed = s->changed;
  GST_OBJECT_UNLOCK(trans);
  if (changed && s->in.info.finfo != nullptr) configure(trans);
}

gboolean propose_allocation(GstBaseTransform *trans, GstQuery *decided,
                            GstQuery *query) {
  if (!GST_BASE_TRANSFORM_CLASS(vexo_filter_parent_class)
           ->propose_allocation(trans, decided, query)) {
    return FALSE;
  }
  // Passed through, it is what comes behind that has to know of crops.
  if (decided != nullptr) {
    gst_query_add_allocation_meta(query, GST_VIDEO_CROP_META_API_TYPE, nullptr);
  }
  return TRUE;
}

gboolean transform_meta(GstBaseTransform *trans, GstBuffer *outbuf,
                        GstMeta *meta, GstBuffer *inbuf) {
  const State &s = *state_of(trans);
  const GType api = meta->info->api;
  if (api == GST_VIDEO_CROP_META_API_TYPE) return FALSE;  // it is cut out
  if (!gst_meta_api_type_has_tag(
          api, g_quark_from_static_string(GST_META_TAG_VIDEO_SIZE_STR))) {
    return GST_BASE_TRANSFORM_CLASS(vexo_filter_parent_class)
        ->transform_meta(trans, outbuf, meta, inbuf);
  }
  // Places in the picture are known to scale, and to do nothing else.
  if (s.turn.rotation != VEXO_ROT_COPY || s.place.w != s.out.info.width ||
      s.place.h != s.out.info.height || meta->info->transform_func == nullptr ||
      gst_buffer_get_video_crop_meta(inbuf) != nullptr) {
    return FALSE;
  }
  GstVideoInfo in = s.in.info;
  GstVideoInfo out = s.out.info;
  GstVideoMetaTransform sizes = {&in, &out};
  return meta->info->transform_func(
      outbuf, meta, inbuf, gst_video_meta_transform_scale_get_quark(), &sizes);
}

// What of the frame is the picture: the crop, as far as it lies inside.
GstVideoRectangle part_of(const GstVideoFrame &frame, const Side &side) {
  GstVideoRectangle part = {0, 0, side.info.width, side.info.height};
  const GstVideoCropMeta *crop = gst_buffer_get_video_crop_meta(frame.buffer);
  if (crop == nullptr) return part;
  const GstVideoFormatInfo *format = frame.info.finfo;
  const auto corner = [](guint value, int size, bool halved) {
    const int at =
        value < static_cast<guint>(size) ? static_cast<int>(value) : size - 1;
    return halved ? at & ~1 : at;
  };
  const auto rest = [](guint wanted, int most) {
    return wanted == 0 || wanted > static_cast<guint>(most)
               ? most
               : static_cast<int>(wanted);
  };
  const bool yuv = GST_VIDEO_FORMAT_INFO_IS_YUV(format);
  part.x = corner(crop->x, frame.info.width,
                  yuv && GST_VIDEO_FORMAT_INFO_W_SUB(format, 1) != 0);
  part.y = corner(crop->y, frame.info.height,
                  yuv && GST_VIDEO_FORMAT_INFO_H_SUB(format, 1) != 0);
  part.w = rest(crop->width, frame.info.width - part.x);
  part.h = rest(crop->height, frame.info.height - part.y);
  return part;
}

GstFlowReturn transform_frame(GstVideoFilter *filter, GstVideoFrame *in,
                              GstVideoFrame *out) {
  State *const s = state_of(filter);
  vexo_img src;
  vexo_img dst;
  if (!picture_of(*in, s->in, s->standards[0], part_of(*in, s->in), &src) ||
      !picture_of(*out, s->out, s->standards[1], s->place, &dst)) {
    GST_ELEMENT_ERROR(filter, STREAM, FORMAT, (nullptr),
                      ("a buffer's planes do not hold its picture"));
    return GST_FLOW_ERROR;
  }
  if (s->turn.upside_down) src = upside_down(src);
  if (s->place.w != s->out.info.width || s->place.h != s->out.info.height) {
    draw_border(*out, s->out, s->place);
  }
  const bool fields =
      GST_VIDEO_FRAME_IS_INTERLACED(in) && has_fields(s->in) &&
      has_fields(s->out) && src.height[0] % 4 == 0 && dst.height[0] % 4 == 0 &&
      (s->turn.rotation == VEXO_ROT_COPY || s->turn.rotation == VEXO_ROT_HORI);
  int32_t status = VEXO_OK;
  if (fields) {
    for (int f = 0; f < 2 && status == VEXO_OK; ++f) {
      status = run(filter, field_of(src, f), field_of(dst, f));
    }
  } else {
    status = run(filter, src, dst);
  }
  if (status != VEXO_OK) {
    GST_ELEMENT_ERROR(filter, STREAM, FORMAT, (nullptr),
                      ("%s", vexo_status_name(status)));
    return GST_FLOW_ERROR;
  }
  if (GST_VIDEO_INFO_HAS_ALPHA(&s->out.info) && s->in.format >= 500 &&
      s->in.format < 600 && !GST_VIDEO_INFO_HAS_ALPHA(&s->in.info)) {
    set_opaque(dst);
  }
  return GST_FLOW_OK;
}

// Says that what was negotiated may not be what is wanted any more.
void change(gpointer object) {
  GST_OBJECT_LOCK(object);
  state_of(object)->changed = true;
  GST_OBJECT_UNLOCK(object);
  gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

gboolean sink_event(GstBaseTransform *trans, GstEvent *event) {
  State *const s = state_of(trans);
  GstVideoOrientationMethod tag = GST_VIDEO_ORIENTATION_IDENTITY;
  GstTagList *tags = nullptr;
  const bool starts = GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START;
  if (GST_EVENT_TYPE(event) == GST_EVENT_TAG) {
    gst_event_parse_tag(event, &tags);
    if (!gst_video_orientation_from_tag(tags, &tag)) tags = nullptr;
  }
  if (starts || tags != nullptr) {
    GST_OBJECT_LOCK(trans);
    const bool turns = s->direction == GST_VIDEO_ORIENTATION_AUTO;
    const bool other = s->tag != tag;
    s->tag = tag;
    GST_OBJECT_UNLOCK(trans);
    if (turns && other) change(trans);
    if (turns && tags != nullptr) {
      // The picture is upright from here on.
      GstTagList *upright = gst_tag_list_copy(tags);
      gst_tag_list_add(upright, GST_TAG_MERGE_REPLACE,
                       GST_TAG_IMAGE_ORIENTATION, "rotate-0", nullptr);
      gst_event_unref(event);
      event = gst_event_new_tag(upright);
    }
  }
  return GST_BASE_TRANSFORM_CLASS(vexo_filter_parent_class)
      ->sink_event(trans, event);
}

// Where a pointer is in the picture as it came in.
void point_back(const State &s, double *x, double *y) {
  const double u = (*x - s.place.x) / s.place.w;
  const double v = (*y - s.place.y) / s.place.h;
  double across = u;
  double down = v;
  switch (s.turn.rotation) {
    case VEXO_ROT_90L:
      across = 1 - v;
      down = u;
      break;
    case VEXO_ROT_90R:
      across = v;
      down = 1 - u;
      break;
    case VEXO_ROT_180:
      across = 1 - u;
      down = 1 - v;
      break;
    case VEXO_ROT_HORI:
      across = 1 - u;
      break;
    case VEXO_ROT_VERT:
      down = 1 - v;
      break;
    default:
      break;
  }
  if (s.turn.upside_down) down = 1 - down;
  *x = across * s.in.info.width;
  *y = down * s.in.info.height;
}

gboolean src_event(GstBaseTransform *trans, GstEvent *event) {
  const State &s = *state_of(trans);
  double x = 0;
  double y = 0;
  if (GST_EVENT_TYPE(event) == GST_EVENT_NAVIGATION && s.place.w > 0 &&
      gst_navigation_event_get_coordinates(event, &x, &y)) {
    point_back(s, &x, &y);
    event = gst_event_make_writable(event);
    gst_navigation_event_set_coordinates(event, x, y);
  }
  return GST_BASE_TRANSFORM_CLASS(vexo_filter_parent_class)
      ->src_event(trans, event);
}

void set_property(GObject *object, guint id, const GValue *value,
                  GParamSpec *) {
  State *const s = state_of(object);
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
    default:
      s->prescale = g_value_get_enum(value);
      break;
  }
  GST_OBJECT_UNLOCK(object);
  change(object);
}

void get_property(GObject *object, guint id, GValue *value, GParamSpec *) {
  const State &s = *state_of(object);
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
    default:
      g_value_set_enum(value, s.prescale);
      break;
  }
  GST_OBJECT_UNLOCK(object);
}

void finalize(GObject *object) {
  delete state_of(object);
  G_OBJECT_CLASS(vexo_filter_parent_class)->finalize(object);
}

// Each class that has properties names the functions of its own.
void serve_properties(gpointer klass) {
  G_OBJECT_CLASS(klass)->set_property = set_property;
  G_OBJECT_CLASS(klass)->get_property = get_property;
}

constexpr auto kFlags = static_cast<GParamFlags>(
    G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);

void install_enum(gpointer klass, Property id, const char *name,
                  const char *blurb, const char *type,
                  const GEnumValue *values) {
  g_object_class_install_property(
      G_OBJECT_CLASS(klass), id,
      g_param_spec_enum(name, name, blurb, g_enum_register_static(type, values),
                        0, kFlags));
}

}  // namespace

static void vexo_filter_init(VexoFilter *self) {
  self->state = new (std::nothrow) State;
}

static void vexo_filter_class_init(VexoFilterClass *klass) {
  auto *const object = G_OBJECT_CLASS(klass);
  auto *const element = GST_ELEMENT_CLASS(klass);
  auto *const trans = GST_BASE_TRANSFORM_CLASS(klass);
  serve_properties(klass);
  object->finalize = finalize;
  g_object_class_override_property(object, kDirection, "video-direction");
  g_object_class_install_property(
      object, kAddBorders,
      g_param_spec_boolean("add-borders", "Add borders",
                           "Black borders where the picture would change its "
                           "aspect",
                           TRUE, kFlags));
  // Other memory and other formats pass as they are.
  GstCaps *caps = own_caps();
  GstCaps *others = gst_caps_from_string("video/x-raw(ANY)");
  gst_caps_append(caps, others);
  gst_element_class_add_pad_template(
      element,
      gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
  gst_element_class_add_pad_template(
      element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
  gst_caps_unref(caps);
  trans->transform_caps = transform_caps;
  trans->fixate_caps = fixate_caps;
  trans->before_transform = before_transform;
  trans->propose_allocation = propose_allocation;
  trans->transform_meta = transform_meta;
  trans->sink_event = sink_event;
  trans->src_event = src_event;
  GST_VIDEO_FILTER_CLASS(klass)->set_info = set_info;
  GST_VIDEO_FILTER_CLASS(klass)->transform_frame = transform_frame;
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
      {0, nullptr, nullptr}};
  install_enum(klass, kMethod, "method", "How pictures are scaled",
               "VexoScaleMethod", methods);
  static const GEnumValue dithers[] = {{0, "Low bits are left out", "none"},
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
