// SPDX-License-Identifier: Apache-2.0
//
// Where chroma lies: how the library is to interpolate it, and what caps say of
// it behind an element.
#pragma once

#include "frame.h"

namespace lox_gst {

// One of VEXO_CHROMA_ for chroma of this side: between the columns or on the
// left one. Of rows it is always between them.
int32_t chroma_of(const Side &side);

// Where chroma lies that is made of another side's without scaling: unknown
// where caps have no word for it, or where there is none to ask for.
GstVideoChromaSite site_made(const Side &from, const Side &to, const Turn &turn,
                             bool interpolates);

// Whether both sides name a site, their chroma being equally dense, and not the
// same one: chroma is not moved.
bool moves_chroma(const Side &from, const Side &to, const Turn &turn,
                  bool interpolates);

// Names the site in fixed caps that leave it open, where it is not what
// everybody takes it for.
void describe_site(GstStructure *s, GstVideoChromaSite site, bool always);

}  // namespace lox_gst
