// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of sharpening and deblocking of the level that runs.
#pragma once

#include "vqe/vqe_rows.h"

namespace lox::vqe {

#define LOX_ADDRESS(set) &set::vqe_rows,
inline constexpr const VqeRows *kTables[] = {LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS

inline const VqeRows &vqe_rows() { return *kTables[isa_level()]; }

}  // namespace lox::vqe
