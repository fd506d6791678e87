// SPDX-License-Identifier: Apache-2.0
// Cases of the conversion kernels, whose names say what they convert.
#pragma once

#include "cases/cases.h"
#include "support/conversion_name.h"

namespace lox_test {

using Conversion = ConversionName;

// Whether vexo_csc has a route between two formats, whatever the standard; one
// of its routes.
bool has_route(int32_t from, int32_t to);
const Conversion &any_route(Source &source);

// Planes of exactly the size that the conversion needs.
void set_pictures(const Conversion &conversion, int32_t width, int32_t height,
                  Picture *src, Picture *dst);

// The body of a kernel vexo_csc_[STANDARD_]FROM_to_TO.
void conversion(const Function &function, Source &source, Sink &sink);

}  // namespace lox_test
