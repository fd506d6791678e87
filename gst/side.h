// SPDX-License-Identifier: Apache-2.0
//
// A side of an element as the library sees it: layout, colours, and whether the
// library leads from one to another.
#pragma once

#include <gst/video/video.h>
#include <orumlox/picture.h>

namespace lox_gst {

// Standard of samples that the library has no matrix for.
inline constexpr int32_t kNoStandard = -1;

struct Side {
  GstVideoInfo info;
  int32_t format;    // one of VEXO_FMT_, -1 where the library has none
  int32_t standard;  // one of VEXO_STD_ of YUV, else 0
  bool sited;        // its caps name the chroma site
};

// All formats of the elements as a value of caps, best known ones first.
const GValue *all_formats();
int32_t format_of(GstVideoFormat format);
void append_name(GValue *list, const char *name);

// Colours are those that pictures of this height usually have: from 720 lines
// on BT.709, smaller ones BT.601.
Side make_side(GstVideoFormat format, int height);
void set_colours(Side *side, GstVideoColorimetry colours);
// By the name that caps have; null leaves the usual ones.
void set_colours(Side *side, const char *name);
bool side_of_caps(const GstCaps *caps, Side *side);

// What the samples of the other side are to be called if nobody says it.
GstVideoColorimetry usual_colours(const Side &from, bool labelled,
                                  const GstVideoFormatInfo *to);

// How samples of the one become those of the other: the standards to name to
// the library, and the colours that it makes, which are the other's unless it
// makes no YUV of those (colours.h).
struct Way {
  int32_t standards[2];
  GstVideoColorimetry made;
};

// Whether there is one without a change of light, which is tone mapping.
// Primaries are not looked at: they stay what they are, whatever they are
// called.
bool leads_to(const Side &from, const Side &to, Way *way);

// What a picture loses on the way to another format: the less the better.
int loss(const Side &from, const Side &to);

}  // namespace lox_gst
