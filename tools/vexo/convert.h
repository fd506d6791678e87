// SPDX-License-Identifier: Apache-2.0
//
// vexo convert: what the command line asks for.
#pragma once

#include <cstdint>
#include <string>

namespace vexo {

struct ConvertOptions {
  std::string in;
  std::string out;
  // Empty strings: not given.
  std::string in_kind;
  std::string out_kind;
  std::string size;
  std::string from;
  std::string to;
  std::string via;
  int32_t color_std = 0;
  bool quiet = false;
};

void convert(const ConvertOptions &options);

}  // namespace vexo
