// SPDX-License-Identifier: Apache-2.0
// The row tables of a family as a list by level, to hold each against the
// portable one.
#pragma once

#include "common/isa.h"

// LOX_ROW_SETS(csc_rows): a brace list of pointers to each set's table.
#define LOX_ROW_SETS_copy_rows(set) &lox::set::copy_rows,
#define LOX_ROW_SETS_csc_rows(set) &lox::set::csc_rows,
#define LOX_ROW_SETS_rgb_rows(set) &lox::set::rgb_rows,
#define LOX_ROW_SETS_layout_rows(set) &lox::set::layout_rows,
#define LOX_ROW_SETS_turn_rows(set) &lox::set::turn_rows,
#define LOX_ROW_SETS_block_rows(set) &lox::set::block_rows,
#define LOX_ROW_SETS_dct_rows(set) &lox::set::dct_rows,
#define LOX_ROW_SETS_hdr_rows(set) &lox::set::hdr_rows,
#define LOX_ROW_SETS_scale_rows(set) &lox::set::scale_rows,
#define LOX_ROW_SETS_scan_rows(set) &lox::set::scan_rows,
#define LOX_ROW_SETS_vqe_rows(set) &lox::set::vqe_rows,
#define LOX_ROW_SETS(table) \
  { LOX_FOR_EACH_SET(LOX_ROW_SETS_##table) }
