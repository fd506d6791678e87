// SPDX-License-Identifier: Apache-2.0
//
// What an element offers on one pad for what the other has, and what it chooses
// of that.
#pragma once

#include "side.h"

namespace lox_gst {

// What an element does to pictures besides converting them.
struct Shape {
  bool turns;
  bool quarter;  // width and height are exchanged
  bool only_reduces;
};

// Whether a structure is of plain memory, which the library works in.
bool in_system_memory(const GstCaps *caps, guint i);

// The part of the element's caps that it converts between.
GstCaps *own_caps();

GstCaps *other_caps(const GstCaps *caps, GstPadDirection direction,
                    const Shape &shape);
// Takes `others`.
GstCaps *choose_caps(const GstCaps *caps, GstPadDirection direction,
                     GstCaps *others, const Shape &shape);

// Chroma of the same density is not moved: sites that both sides name are
// equal.
bool same_sites(const GstCaps *caps, const GstCaps *other);

// Where the picture lies in one of this size if its aspect is kept: all of it
// but for a border.
GstVideoRectangle place_in(const GstVideoInfo &in, const GstVideoInfo &out,
                           bool quarter);

}  // namespace lox_gst
