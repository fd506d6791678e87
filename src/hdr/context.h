// SPDX-License-Identifier: Apache-2.0
//
// The context of one tone mapping: how it is chosen and filled.
#pragma once

#include "orumlox/hdr.h"

namespace lox {

// Chooses the luminance of white as vexo_hdr10_to_sdr8 says, logs it and writes
// it to the source.
int32_t choose_final_nit(vexo_img *src);

// Fills every member. `nit` is one of 1000, 2000, 4000 and 4001; `variant` and
// `hlg` are the members of these names.
void build_hdr_context(vexo_hdr_context *context, const vexo_img *src,
                       const vexo_img *dst, int32_t nit, int32_t variant,
                       int32_t hlg);

}  // namespace lox
