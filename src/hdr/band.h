// SPDX-License-Identifier: Apache-2.0
//
// Which destinations lay bands over each other.
#pragma once

#include <stdint.h>

namespace lox {

// Whether all bands of a destination of this format begin at the start of its
// planes.
bool bands_overlap(int32_t dst_format);

// Whether a source of this format is read, and the destination written whole.
bool maps_tones(int32_t src_format, int32_t dst_format);

}  // namespace lox
