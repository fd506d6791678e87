// SPDX-License-Identifier: Apache-2.0
//
// The types of the plugin's elements.
#pragma once

#include <gst/gst.h>

GType vexo_convert_get_type();
GType vexo_thumbnail_get_type();
GType vexo_tonemap_get_type();

namespace lox_gst {

// How properties may be set.
inline constexpr auto kFlags = static_cast<GParamFlags>(
    G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);

}  // namespace lox_gst
