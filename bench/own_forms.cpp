// SPDX-License-Identifier: Apache-2.0
//
// This library's own rows: the form that it chooses itself on this machine, as
// "orumlox", and every lesser one of the same build under its name.
#include <string>

#include "bench/contender.h"
#include "common/isa.h"

namespace bench {

void add_own_forms(const Workload &workload, int width, int height,
                   Contenders *out) {
  for (int level = lox::isa_best(); level >= 0; --level) {
    std::string name = "orumlox";
    if (level < lox::isa_best()) {
      name += std::string(" ") + lox::isa_name(level);
    }
    out->push_back({name, Contender::Kind::kOwn,
                    [=](uint8_t *src, uint8_t *dst) {
                      run_library(workload, width, height, src, dst);
                    },
                    workload.dst_format, level});
  }
}

}  // namespace bench
