// SPDX-License-Identifier: Apache-2.0
//
// The search for start codes in compressed video.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

// What follows two zero bytes: a byte c with c & mask == value, one or the
// other.
struct StartCode {
  uint8_t mask, value, other_mask, other_value;
};

struct ScanRows {
  // The first p from 0 to n - 1 with data[p] and data[p + 1] zero and
  // data[p + 2] the start code's; n if there is none. Reads n + 2 bytes at
  // most, none for n below 1.
  ptrdiff_t (*find)(const uint8_t *data, ptrdiff_t n, StartCode code);
};

LOX_ROW_TABLE(ScanRows, scan_rows)

}  // namespace lox
