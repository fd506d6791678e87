// SPDX-License-Identifier: Apache-2.0
//
// The types of the plugin's elements.
#pragma once

#include <glib-object.h>

GType vexo_convert_get_type();
GType vexo_thumbnail_get_type();
GType vexo_tonemap_get_type();
