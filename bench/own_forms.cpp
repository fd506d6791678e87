// SPDX-License-Identifier: Apache-2.0
//
// This library's own rows: the form that it chooses itself on this machine, as
// "orumlox", and every lesser one of the same build under its name. Scaling
// with a turn is beside it in two calls as well.
#include <memory>
#include <string>
#include <utility>

#include "bench/contender.h"
#include "common/isa.h"

namespace bench {

void add_own_forms(const Workload &workload, const Sizes &sizes,
                   Contenders *out) {
  if (workload.task == Task::kReduce) return;  // own_dct.cpp has those
  constexpr auto kOwn = Contender::Kind::kOwn;
  for (int level = lox::isa_best(); level >= 0; --level) {
    std::string name = "orumlox";
    if (level < lox::isa_best()) {
      name += std::string(" ") + lox::isa_name(level);
    }
    out->push_back({name, kOwn,
                    [=](uint8_t *src, uint8_t *dst) {
                      run_library(workload, sizes, src, dst);
                    },
                    workload.dst_format, level});
  }
  if (workload.task != Task::kScaleAndTurn) return;

  Workload unturned = workload;
  unturned.rotation = VEXO_ROT_COPY;
  Sizes upright = sizes;
  if (workload.is_quarter_turn()) {
    std::swap(upright.dst.width, upright.dst.height);
  }
  const auto scaled = std::make_shared<std::vector<uint8_t>>(
      frame_bytes(describe_dst(unturned, upright, nullptr)));
  out->push_back({"orumlox two calls", kOwn,
                  [=](uint8_t *src, uint8_t *dst) {
                    const vexo_img from = describe_src(workload, sizes, src);
                    const vexo_img between =
                        describe_dst(unturned, upright, scaled->data());
                    const vexo_img to = describe_dst(workload, sizes, dst);
                    vexo_rsz(&from, &between);
                    vexo_rot(&between, workload.rotation, &to);
                  },
                  workload.dst_format});
}

}  // namespace bench
