// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of scaling of the level that runs.
#pragma once

#include "rsz/scale_rows.h"

namespace lox::rsz {

#define LOX_ADDRESS(set) &set::scale_rows,
inline constexpr const ScaleTables *kScaleTables[] = {
    LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS

inline const ScaleTables &scale_rows() { return *kScaleTables[isa_level()]; }

}  // namespace lox::rsz
