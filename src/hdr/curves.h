// SPDX-License-Identifier: Apache-2.0
//
// The curves that no call changes.
#pragma once

#include <stdint.h>

namespace lox {

// Of a PQ code i / 1023 the luminance by SMPTE ST 2084, of 10000 nits.
extern const double kPqLight[1024];
// The tables hlg_linear and gamma of a context.
extern const uint16_t kHlgLinear[1024];
extern const uint8_t kGamma[4096];
// gamma from entry 256 on, as registers hold it: of every 16 entries two
// numbers of 4 bits; an entry is the first of its 16, and one more for each of
// the two that i % 16 is above.
extern const uint8_t kGammaSteps[256];

}  // namespace lox
