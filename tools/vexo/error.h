// SPDX-License-Identifier: Apache-2.0
//
// The one exception of the tool: a sentence for the user, printed by main.
#pragma once

#include <stdexcept>
#include <string>

namespace vexo {

class Error : public std::runtime_error {
 public:
  explicit Error(const std::string &sentence) : std::runtime_error(sentence) {}
};

// What failed has been said, a line each.
class Reported : public Error {
 public:
  Reported() : Error("") {}
};

}  // namespace vexo
