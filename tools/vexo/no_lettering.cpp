// SPDX-License-Identifier: Apache-2.0
//
// In place of lettering.cpp where there is no FreeType.
#include "error.h"
#include "lettering.h"

namespace vexo {

struct Lettering::Font {};

Lettering::Lettering(const std::string &, int) {
  throw Error("this program is built without FreeType, which draws times");
}
Lettering::~Lettering() = default;
void Lettering::draw(const std::string &, const Frame &, int, int) const {}

}  // namespace vexo
