// SPDX-License-Identifier: Apache-2.0
//
// What loses bits: pictures with 10-bit samples to others and to 8 bits, and
// what is dithered to RGB of 16 bits.
#pragma once

#include <cstdint>

#include "common/row_range.h"
#include "csc/routes.h"
#include "orumlox/img.h"

namespace lox {

enum class Loss : uint8_t { kRounded, kDithered };

// Whether the one format is 4:2:0 of 16-bit samples, the other of bytes.
bool loses_bits(int32_t from, int32_t to);

// Converts these rows of such a picture.
void to_8_bits(const vexo_img &src, const vexo_img &dst, Loss loss,
               RowRange rows);

// To RGB565 and BGR565, dithered.
Routes dithered_routes();

}  // namespace lox
