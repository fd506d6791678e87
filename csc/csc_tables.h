// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of the level that runs.
#pragma once

#include "csc/csc_rows.h"
#include "csc/layout_rows.h"
#include "csc/rgb_rows.h"

namespace lox::csc {

#define LOX_ADDRESS(set) &set::csc_rows,
inline constexpr const CscRows *kCscTables[] = {LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS
#define LOX_ADDRESS(set) &set::rgb_rows,
inline constexpr const RgbRows *kRgbTables[] = {LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS
#define LOX_ADDRESS(set) &set::layout_rows,
inline constexpr const LayoutRows *kLayoutTables[] = {
    LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS

inline const CscRows &yuv_to_rgb_rows() { return *kCscTables[isa_level()]; }
inline const RgbRows &rgb_rows() { return *kRgbTables[isa_level()]; }
inline const LayoutRows &layout_rows() { return *kLayoutTables[isa_level()]; }

}  // namespace lox::csc
