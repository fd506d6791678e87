// SPDX-License-Identifier: Apache-2.0
//
// The conversions between YUV layouts that are routes without an exported
// kernel.
#pragma once

#include "orumlox/csc.h"

namespace lox {

vexo_csc_kernel yuv420_to_yv12;
vexo_csc_kernel nv12_to_nv21;

}  // namespace lox
