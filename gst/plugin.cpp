// SPDX-License-Identifier: Apache-2.0
#include <gst/gst.h>

#include "elements.h"

GST_DEBUG_CATEGORY(vexo_debug);

static gboolean register_elements(GstPlugin *plugin) {
  GST_DEBUG_CATEGORY_INIT(vexo_debug, "vexo", 0, "orumlox elements");
  // Asked for by name alone: players go on choosing their own.
  return gst_element_register(plugin, "vexoconvert", GST_RANK_NONE,
                              vexo_convert_get_type()) &&
         gst_element_register(plugin, "vexothumbnail", GST_RANK_NONE,
                              vexo_thumbnail_get_type()) &&
         gst_element_register(plugin, "vexotonemap", GST_RANK_NONE,
                              vexo_tonemap_get_type());
}

#define PACKAGE "orumlox"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, orumlox,
                  "Converts, scales, turns and tone maps video",
                  register_elements, ORUMLOX_VERSION, "Apache 2.0", "orumlox",
                  "orumlox")
