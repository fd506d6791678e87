// SPDX-License-Identifier: Apache-2.0
//
// Frames as the library's pictures, whole or in part, and what an element does
// to them itself.
#pragma once

#include <orumlox/rot.h>

#include "side.h"

namespace lox_gst {

// A direction of video as the library knows them: some are a turn of the
// picture upside down, which strides make.
struct Turn {
  int32_t rotation;
  bool upside_down;

  bool is_identity() const { return rotation == VEXO_ROT_COPY && !upside_down; }
};
Turn turn_of(GstVideoOrientationMethod direction);
constexpr bool is_quarter(int32_t rotation) {
  return rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
}
constexpr bool is_quarter(const Turn &turn) {
  return is_quarter(turn.rotation);
}

// A rectangle of a mapped frame. Of halved chroma the corner is even.
bool picture_of(const GstVideoFrame &frame, const Side &side, int32_t standard,
                const GstVideoRectangle &part, vexo_img *img);
// One of an interlaced picture's two, or the picture upside down.
vexo_img field_of(const vexo_img &img, int field);
vexo_img upside_down(const vexo_img &img);

// Blackens what lies outside of the rectangle.
void draw_border(const GstVideoFrame &frame, const Side &side,
                 const GstVideoRectangle &place);

// Makes each pixel opaque: of a source whose fourth byte means nothing.
void set_opaque(const vexo_img &img);

}  // namespace lox_gst
