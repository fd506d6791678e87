// SPDX-License-Identifier: Apache-2.0
#include "filter.h"

#include <gst/video/gstvideometa.h>
#include <gst/video/navigation.h>

#include <new>

#include "caps.h"
#include "colours.h"
#include "site.h"

GST_DEBUG_CATEGORY_EXTERN(vexo_debug);
#define GST_CAT_DEFAULT vexo_debug

using namespace lox_gst;

namespace {

// One of the fields of an interlaced picture has whole rows of chroma.
bool has_fields(const Side &side) {
  return !GST_VIDEO_INFO_IS_YUV(&side.info) ||
         GST_VIDEO_FORMAT_INFO_H_SUB(side.info.finfo, 1) == 0 ||
         side.info.height % 4 == 0;
}

}  // namespace

static void vexo_filter_direction(GstVideoDirectionInterface *) {}
G_DEFINE_ABSTRACT_TYPE_WITH_CODE(VexoFilter, vexo_filter, GST_TYPE_VIDEO_FILTER,
                                 G_IMPLEMENT_INTERFACE(GST_TYPE_VIDEO_DIRECTION,
                                                       vexo_filter_direction))

namespace {

bool makes_thumbnails(gpointer object) {
  return reinterpret_cast<VexoFilterClass *>(G_OBJECT_GET_CLASS(object))
      ->makes_thumbnails;
}

Turn wanted_turn(gpointer object) {
  FilterState *const s = state_of(object);
  GST_OBJECT_LOCK(object);
  const Turn turn = turn_of(
      s->direction == GST_VIDEO_ORIENTATION_AUTO ? s->tag : s->direction);
  GST_OBJECT_UNLOCK(object);
  return turn;
}

Shape shape_of(gpointer object) {
  const Turn turn = wanted_turn(object);
  GST_OBJECT_LOCK(object);
  const bool interpolates = state_of(object)->chroma != 0;
  GST_OBJECT_UNLOCK(object);
  return {turn, makes_thumbnails(object), interpolates};
}

int32_t run(gpointer object, const vexo_img &src, const vexo_img &dst) {
  FilterState *const s = state_of(object);
  const int32_t status = makes_thumbnails(object)
                             ? s->runner.thumbnail(src, dst, s->options)
                             : s->runner.run(src, dst, s->options);
  const GstVideoColorimetry &colours = s->out.info.colorimetry;
  if (status == VEXO_OK && (s->way.made.matrix != colours.matrix ||
                            s->way.made.range != colours.range)) {
    const auto change = [](const vexo_img &rows, const void *state) {
      const auto &of = *static_cast<const FilterState *>(state);
      change_colours(rows, of.out.info.finfo, of.way.made,
                     of.out.info.colorimetry);
    };
    s->runner.for_rows(dst, change, s);
  }
  return status;
}

// Whether the library does it at these sizes: on black, in memory of its own.
bool is_done(gpointer object) {
  const FilterState &s = *state_of(object);
  vexo_img src = {};
  vexo_img dst = {};
  int32_t status =
      vexo_picture_alloc(&src, s.in.format, s.in.info.width, s.in.info.height);
  if (status == VEXO_OK) {
    status = vexo_picture_alloc(&dst, s.out.format, s.place.w, s.place.h);
  }
  src.color_std = s.way.standards[0];
  dst.color_std = s.way.standards[1];
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
  FilterState *const s = state_of(object);
  const GstVideoInfo &in = s->in.info;
  const GstVideoInfo &out = s->out.info;
  const Turn turn = wanted_turn(object);
  GST_OBJECT_LOCK(object);
  s->changed = false;
  s->turn = turn;
  const bool borders = s->add_borders != FALSE;
  s->runner.set_threads(s->threads);
  s->options = {};
  s->options.rotation = s->turn.rotation;
  s->options.mode = s->method == 1 ? VEXO_MODE_MOD1 : 0;
  s->options.prescale = s->prescale;
  s->options.filter = s->method == 2 ? VEXO_FILTER_LANCZOS : VEXO_FILTER_PLAIN;
  s->options.dither = s->dither;
  if (s->chroma != 0) s->options.chroma = chroma_of(s->in);
  const bool turns = !turn.is_identity();
  bool nothing = s->same_caps && !turns;
  s->place = {0, 0, out.width, out.height};
  if (borders && !nothing) s->place = place_in(in, out, is_quarter(turn));
  GST_OBJECT_UNLOCK(object);

  if (!nothing) {
    if (!leads_to(s->in, s->out, &s->way)) {
      GST_ERROR_OBJECT(object, "the library does not convert these colours");
      return false;
    }
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
  FilterState *const s = state_of(filter);
  const Shape shape = shape_of(filter);
  Side sides[2];
  if (!side_of_caps(incaps, &sides[0]) || !side_of_caps(outcaps, &sides[1])) {
    return FALSE;
  }
  GST_OBJECT_LOCK(filter);
  s->same_caps = gst_caps_is_equal(incaps, outcaps) != FALSE;
  s->in = sides[0];
  s->out = sides[1];
  GST_OBJECT_UNLOCK(filter);
  if (in->fps_n != out->fps_n || in->fps_d != out->fps_d ||
      in->interlace_mode != out->interlace_mode ||
      moves_chroma(s->in, s->out, shape.turn, shape.interpolates)) {
    GST_ERROR_OBJECT(filter,
                     "rates, interlacing and chroma sites are not changed");
    return FALSE;
  }
  return configure(filter) ? TRUE : FALSE;
}

GstCaps *transform_caps(GstBaseTransform *trans, GstPadDirection direction,
                        GstCaps *caps, GstCaps *filter) {
  return filtered(other_caps(caps, direction, shape_of(trans)), filter);
}

GstCaps *fixate_caps(GstBaseTransform *trans, GstPadDirection direction,
                     GstCaps *caps, GstCaps *others) {
  return choose_caps(caps, direction, others, shape_of(trans));
}

void before_transform(GstBaseTransform *trans, GstBuffer *) {
  FilterState *const s = state_of(trans);
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
  const FilterState &s = *state_of(trans);
  const GType api = meta->info->api;
  if (!gst_meta_api_type_has_tag(
          api, g_quark_from_static_string(GST_META_TAG_VIDEO_SIZE_STR))) {
    return GST_BASE_TRANSFORM_CLASS(vexo_filter_parent_class)
        ->transform_meta(trans, outbuf, meta, inbuf);
  }
  // Places in the picture are known to scale, and to do nothing else. The crop
  // itself is cut out.
  if (!s.turn.is_identity() || s.place.w != s.out.info.width ||
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
  FilterState *const s = state_of(filter);
  vexo_img src;
  vexo_img dst;
  if (!picture_of(*in, s->in, s->way.standards[0], part_of(*in, s->in), &src) ||
      !picture_of(*out, s->out, s->way.standards[1], s->place, &dst)) {
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

gboolean sink_event(GstBaseTransform *trans, GstEvent *event) {
  FilterState *const s = state_of(trans);
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
    if (turns && other) filter_changed(trans);
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
void point_back(const FilterState &s, double *x, double *y) {
  if (s.place.w == 0) return;
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
  double x = 0;
  double y = 0;
  if (GST_EVENT_TYPE(event) == GST_EVENT_NAVIGATION &&
      gst_navigation_event_get_coordinates(event, &x, &y)) {
    GST_OBJECT_LOCK(trans);
    point_back(*state_of(trans), &x, &y);
    GST_OBJECT_UNLOCK(trans);
    event = gst_event_make_writable(event);
    gst_navigation_event_set_coordinates(event, x, y);
  }
  return GST_BASE_TRANSFORM_CLASS(vexo_filter_parent_class)
      ->src_event(trans, event);
}

void finalize(GObject *object) {
  delete state_of(object);
  G_OBJECT_CLASS(vexo_filter_parent_class)->finalize(object);
}

}  // namespace

void lox_gst::filter_changed(gpointer object) {
  GST_OBJECT_LOCK(object);
  state_of(object)->changed = true;
  GST_OBJECT_UNLOCK(object);
  gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

static void vexo_filter_init(VexoFilter *self) {
  self->state = new (std::nothrow) FilterState;
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
  static const GEnumValue resamplers[] = {
      {0, "The sample that covers a pixel", "nearest"},
      {1, "Interpolated by the chroma site of the caps", "linear"},
      {0, nullptr, nullptr}};
  install_enum(klass, kChroma, "chroma-resampler",
               "What pixels of RGB have of the chroma that YUV shares",
               "VexoChromaResampler", resamplers);
  add_pads(element, own_caps(), own_caps());
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
