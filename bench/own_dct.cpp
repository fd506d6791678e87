// SPDX-License-Identifier: Apache-2.0
//
// This library's reductions: every form of its kernels with the call's threads,
// where it has any, on one processor; and as it is designed, on as many as
// there are. RGBA8888 by the parts of the call shows what its threads take.
#include <memory>
#include <string>

#include "bench/contender.h"
#include "bench/dct_plan.h"
#include "common/isa.h"

namespace bench {

void add_own_reduction(const Workload &workload, const Sizes &sizes,
                       Contenders *out) {
  if (workload.task != Task::kReduce) return;
  using Threads = Contender::Threads;
  const int best = lox::isa_best();
  // Each form plans for itself, for a plan may hold what suits it.
  for (int level = best; level >= 0; --level) {
    lox::isa_limit(level);
    const auto plan = std::make_shared<DctPlan>(workload, sizes);
    lox::isa_limit(best);
    const auto add = [&](const std::string &name, Threads threads) {
      out->push_back({name, Contender::Kind::kOwn,
                      [=](uint8_t *s, uint8_t *d) { plan->run(s, d); },
                      workload.dst_format, level, nullptr, -1, threads});
    };
    if (level < best) {
      add(std::string("orumlox ") + lox::isa_name(level), Threads::kOnOneCore);
      continue;
    }
    add("orumlox", Threads::kOnOneCore);
    if (plan->has_workers()) {
      add("orumlox as designed", Threads::kByTheClock);
    }
    if (workload.src_format == VEXO_FMT_RGBA8888) {
      add("orumlox by parts", Threads::kNone);
      out->back().run = [=](uint8_t *s, uint8_t *d) {
        plan->run_by_parts(s, d);
      };
    }
  }
}

}  // namespace bench
