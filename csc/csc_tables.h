// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of the level that runs.
#pragma once

#include "csc/csc_rows.h"

namespace lox::csc {

#define LOX_ADDRESS(set) &set::csc_rows,
inline constexpr const CscRows *kRowTables[] = {LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS

inline const CscRows &row_kernels() { return *kRowTables[isa_level()]; }

}  // namespace lox::csc
