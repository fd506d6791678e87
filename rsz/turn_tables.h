// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of turning and of the block downscalers of the level that
// runs.
#pragma once

#include "rsz/block_rows.h"
#include "rsz/turn_rows.h"

namespace lox::rsz {

#define LOX_ADDRESS(set) &set::turn_rows,
inline constexpr const TurnRows *kTurnTables[] = {
    LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS
#define LOX_ADDRESS(set) &set::block_rows,
inline constexpr const BlockRows *kBlockTables[] = {
    LOX_FOR_EACH_SET(LOX_ADDRESS)};
#undef LOX_ADDRESS

inline const TurnRows &turn_rows() { return *kTurnTables[isa_level()]; }
inline const BlockRows &block_rows() { return *kBlockTables[isa_level()]; }

}  // namespace lox::rsz
