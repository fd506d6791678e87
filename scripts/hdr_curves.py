#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes src/hdr/curves.cpp: scripts/hdr_curves.py > src/hdr/curves.cpp

The curves are worked out here with 50 digits, once, so that every target has
the same tables whatever its C library's pow(), and no call has to evaluate
thousands of powers.
"""
import struct
from decimal import Decimal, getcontext

getcontext().prec = 50


def single(x):
    """The nearest number of single precision."""
    return struct.unpack("f", struct.pack("f", x))[0]


def pq_light(i):
    """SMPTE ST 2084: the luminance of a 10-bit code, of 10000 nits."""
    m1, m2 = Decimal("0.1593017578125"), Decimal("78.84375")
    c1, c2, c3 = Decimal("0.8359375"), Decimal("18.8515625"), Decimal("18.6875")
    n = (Decimal(i) / 1023) ** (1 / m2)
    return float((max(n - c1, Decimal(0)) / (c2 - c3 * n)) ** (1 / m1))


def hlg_linear(i):
    return int((Decimal(i) / 1023) ** Decimal("2.4") * 32767 + Decimal("0.5"))


def gamma(i):
    # Quotient, exponent and the last product and sum are of single precision.
    y = Decimal(single(i / 4095)) ** Decimal(single(1 / 2.2))
    c = int(min(y, Decimal(1)) * 4095 + Decimal("0.5"))
    return int(single(16 + single((c >> 4) * single(0.85882354))))


def gamma_steps():
    """Where gamma() rises within every 16 entries from 256 on: behind which two
    of them, in 4 bits each; 15 for none."""
    entries = [gamma(i) for i in range(4096)]
    parts = [255] * 16
    for first in range(256, 4096, 16):
        steps = [k for k in range(15) if entries[first + k] != entries[first + k + 1]]
        steps += [15] * (2 - len(steps))
        parts.append(steps[0] << 4 | steps[1])
    return parts


def table(declaration, entries, text):
    print(f"\n{declaration} = {{")
    line = "   "
    for entry in map(text, entries):
        if len(line) + len(entry) + 2 > 80:
            print(line)
            line = "   "
        line += f" {entry},"
    print(line[:-1] + "};")


print("""// SPDX-License-Identifier: Apache-2.0
//
// Written by scripts/hdr_curves.py.
#include "hdr/curves.h"

// clang-format off
namespace lox {""")
table("constexpr double kPqLight[1024]", map(pq_light, range(1024)), float.hex)
table("constexpr uint16_t kHlgLinear[1024]", map(hlg_linear, range(1024)), str)
table("constexpr uint8_t kGamma[4096]", map(gamma, range(4096)), str)
table("alignas(64) constexpr uint8_t kGammaSteps[256]", gamma_steps(), str)
print("""
static_assert([] {
  for (int i = 256; i < 4096; ++i) {
    const int part = kGammaSteps[i / 16], low = part & 15, high = part >> 4;
    if (kGamma[i - i % 16] + (i % 16 > low) + (i % 16 > high) != kGamma[i]) return false;
  }
  return true;
}());""")
print("\n}  // namespace lox")
