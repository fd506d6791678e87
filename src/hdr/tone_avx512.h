// SPDX-License-Identifier: Apache-2.0
//
// Light by tables that registers hold. Defined in tone_avx512.cpp, whose
// instructions not every AVX-512 has: LookUps::kRegisters says where it does.
#pragma once

#include "hdr/hdr_rows.h"

namespace lox::LOX_SET {

extern const HdrRegisterRows hdr_register_rows;

}  // namespace lox::LOX_SET
