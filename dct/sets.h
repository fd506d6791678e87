// SPDX-License-Identifier: Apache-2.0
//
// The memory of shift-matrix sets.
#pragma once

#include "orumlox/unprefixed.h"

namespace lox {

// Entries of the sets of a context.
int32_t set_entries(const vexo_rsz_new_context *context);

// Frees what get_mem3Dint16 made; null is ignored.
void free_set(vexo_shift_set set, int32_t count);

}  // namespace lox
