// SPDX-License-Identifier: Apache-2.0
//
// Text as JSON has it.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace vexo {

// In quotes. Bytes that are no UTF-8 go through as they are, as in names of
// files.
inline std::string json_text(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += {'\\', c};
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
      quoted += code;
    } else {
      quoted += c;
    }
  }
  return quoted += '"';
}

}  // namespace vexo
