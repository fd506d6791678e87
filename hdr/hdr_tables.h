// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of tone mapping that run.
#pragma once

#include "hdr/hdr_rows.h"

namespace lox {

#define LOX_ADDRESS(set) &set::hdr_rows,
inline constexpr const HdrRows *kHdrTables[] = {LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS

inline const HdrRows &hdr_rows() { return *kHdrTables[isa_level()]; }

}  // namespace lox
