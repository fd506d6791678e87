// SPDX-License-Identifier: Apache-2.0
//
// What an element offers on one pad for what the other has, and what it chooses
// of that.
#pragma once

#include "frame.h"

namespace lox_gst {

// What an element does to pictures besides converting them, and how it converts
// them.
struct Shape {
  Turn turn;
  bool only_reduces;
  bool interpolates;  // chroma
};

// Whether a structure is of plain memory, which the library works in.
bool in_system_memory(const GstCaps *caps, guint i);

// The part of the element's caps that it converts between.
GstCaps *own_caps();
// Pads of these caps and of all other video, which passes. Takes both.
void add_pads(GstElementClass *element, GstCaps *sink, GstCaps *src);
// The part of `caps` that a filter leaves, in its order, which may be null.
// Takes `caps`.
GstCaps *filtered(GstCaps *caps, GstCaps *filter);

GstCaps *other_caps(const GstCaps *caps, GstPadDirection direction,
                    const Shape &shape);
// Takes `others`.
GstCaps *choose_caps(const GstCaps *caps, GstPadDirection direction,
                     GstCaps *others, const Shape &shape);

// Where the picture lies in one of this size if its aspect is kept: all of it
// but for a border.
GstVideoRectangle place_in(const GstVideoInfo &in, const GstVideoInfo &out,
                           bool quarter);

}  // namespace lox_gst
