// SPDX-License-Identifier: Apache-2.0
//
// Conversions between YUV layouts that have no exported kernel.
#pragma once

#include "orumlox/csc.h"

namespace lox {

vexo_csc_kernel yuv420_to_yv12;
vexo_csc_kernel nv12_to_nv21;

}  // namespace lox
