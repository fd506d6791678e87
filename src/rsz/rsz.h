// SPDX-License-Identifier: Apache-2.0
//
// Which formats vexo_rsz scales to any size.
#pragma once

#include <cstdint>

namespace lox {

// Codes that no format has among them; P010LE, which is only reduced, is not.
bool is_scaled(int32_t format);

}  // namespace lox
