// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>

namespace lox {

// From this many bytes on, what a call writes is taken not to stay in the
// caches until somebody reads it, so that it may as well be written past them.
// Measured: below, a picture that is written again and again gains from them.
constexpr size_t kBeyondCaches = size_t{4} << 20;

}  // namespace lox
