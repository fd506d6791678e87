// SPDX-License-Identifier: Apache-2.0
//
// Which conversions the library has, by its own answers.
#pragma once

#include <cstdint>
#include <string>

#include "frame.h"

namespace vexo {

// The library's value for bt601, bt709, bt2020 or one of these with -full, and
// back. An unknown name: Error; "no standard" is kNoStandard.
int32_t standard_named(const std::string &name);
const char *standard_name(int32_t color_std);

// Whether vexo_csc converts between the layouts.
bool library_converts(const Layout &from, const Layout &to, int32_t color_std);

}  // namespace vexo
