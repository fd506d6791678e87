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
// gamma from entry 256 on in a form that registers hold: of every 16 entries a
// byte, the first of them, and two of 4 bits: for each that i % 16 has reached
// the entry is one more.
alignas(64) extern const uint16_t kGammaSteps[256];

}  // namespace lox
