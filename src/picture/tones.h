// SPDX-License-Identifier: Apache-2.0
//
// The two stages of tone mapping.
#pragma once

#include "orumlox/picture.h"

namespace lox {

// YUV420PLANAR16 or P010LE as the former.
void take_words(const vexo_img &src, const vexo_img &dst);

// By the options' kind. The destination has rows of an even width without gaps.
int32_t tone_map(const vexo_img &src, const vexo_picture_options &options,
                 const vexo_img &dst);

}  // namespace lox
