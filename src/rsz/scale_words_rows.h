// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of scaling samples of 16 bits: one, or two of them, a unit of
// 2 or of 4 bytes.
#pragma once

#include "common/row_table.h"
#include "rsz/scale_rows.h"

namespace lox {

LOX_ROW_TABLE(ScaleRows, scale_words_rows)

}  // namespace lox
