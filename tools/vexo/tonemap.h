// SPDX-License-Identifier: Apache-2.0
//
// Tone mapping, asked for or because a stream is HDR.
#pragma once

#include <memory>

#include "convert.h"

namespace vexo {

// Whether a command that is not tonemap tone maps this stream: HDR, unless the
// options keep it as it is.
bool is_mapped(const StreamOptions &options, const StreamInfo &source);

// How: "hdr10 of 1000 nits".
std::string mapping_text(const StreamOptions &options, const Colour &colour);

// Into the layout of the output, where nothing comes in between.
std::unique_ptr<Reshape> make_tonemap(const StreamOptions &options, Kind kind,
                                      bool last);

}  // namespace vexo
