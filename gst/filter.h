// SPDX-License-Identifier: Apache-2.0
//
// What vexoconvert and vexothumbnail have in common: an abstract class that
// negotiates, turns and does frames.
#pragma once

#include <gst/video/gstvideofilter.h>

#include "elements.h"
#include "frame.h"
#include "runner.h"

namespace lox_gst {

struct FilterState {
  // Under the object's lock: what was asked for.
  GstVideoOrientationMethod direction = GST_VIDEO_ORIENTATION_IDENTITY;
  GstVideoOrientationMethod tag = GST_VIDEO_ORIENTATION_IDENTITY;
  guint threads = 1;
  gboolean add_borders = TRUE;
  gint method = 0;
  gint dither = 0;
  gint chroma = 0;
  gint prescale = 0;
  bool changed = false;

  // The streaming thread's: what is negotiated, and what follows from it.
  // Events from behind look at sizes, place and turn, under the lock as well.
  bool same_caps = false;
  Side in = {}, out = {};
  Way way = {};
  GstVideoRectangle place = {};
  Turn turn = {};
  vexo_picture_options options = {};
  Runner runner;
};

}  // namespace lox_gst

struct VexoFilter {
  GstVideoFilter parent;
  lox_gst::FilterState *state;
};
struct VexoFilterClass {
  GstVideoFilterClass parent_class;
  bool makes_thumbnails;
};

GType vexo_filter_get_type();

namespace lox_gst {

inline FilterState *state_of(gpointer object) {
  return reinterpret_cast<VexoFilter *>(object)->state;
}

// Says that what was negotiated may not be what is wanted any more.
void filter_changed(gpointer object);

// Those of both classes.
enum FilterProperty {
  kDirection = 1,
  kMethod,
  kDither,
  kThreads,
  kAddBorders,
  kChroma,
  kPrescale
};

// Each class that has properties names the functions of its own.
void serve_properties(gpointer klass);
// A property that is one of these values, by default that which is 0.
void install_enum(gpointer klass, FilterProperty id, const char *name,
                  const char *blurb, const char *type,
                  const GEnumValue *values);

}  // namespace lox_gst
