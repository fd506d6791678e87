// SPDX-License-Identifier: Apache-2.0
//
// vexo sharpen, deblock, saturate and anaglyph.
#pragma once

#include "streams.h"

namespace vexo {

void sharpen(const StreamOptions &streams);
void deblock(const StreamOptions &streams, int strength);
void saturate(const StreamOptions &streams, int strength);
void anaglyph(const StreamOptions &streams, int mode);

}  // namespace vexo
