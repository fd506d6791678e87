// SPDX-License-Identifier: Apache-2.0
//
// This library: the form that it chooses itself on this machine, as "orumlox",
// every lesser one of the same build under its name, and the ways of a call
// whose threads or parts are worth a row. Beside them what is no library's:
// plain code for media streams.
#include <cstring>

#include "common/isa.h"
#include "contender.h"
#include "media.h"

namespace bench {

namespace {

using Threads = Contender::Threads;

void add_plain_code(const Workload &workload, Contenders *out) {
  if (workload.task == Task::kFindKey) {
    add(out, "plain loop", 0, [=](uint8_t *s, uint8_t *d) {
      *d = static_cast<uint8_t>(
          plain_is_key_frame(workload.option, s, int32_t{kMediaBytes}));
    });
  }
  if (workload.task != Task::kReadBits) return;
  for (const BitReader reader : {BitReader::kInlined, BitReader::kCalled}) {
    add(out, reader == BitReader::kInlined ? "inlined" : "called", 0,
        [=](uint8_t *s, uint8_t *d) {
          const uint32_t sum = read_fields(workload.option, reader, s);
          std::memcpy(d, &sum, sizeof(sum));
        });
  }
}

}  // namespace

void add_own(const Workload &workload, const Sizes &sizes, Contenders *out) {
  const int best = lox::isa_best();
  const auto add_way = [&](const std::string &name, Way way, int level,
                           Threads threads) {
    out->push_back({name, 0,
                    [=](bool) { return own_work(workload, sizes, way); }, -1,
                    -1, level, threads});
  };
  const bool maps = workload.task == Task::kToneMap;
  const bool reduces = workload.task == Task::kReduce;
  // What is the same in every form has one row.
  const int least =
      workload.is_setup() || workload.task == Task::kReadBits ? best : 0;
  for (int level = best; level >= least; --level) {
    add_way(level == best ? "orumlox"
                          : std::string("orumlox ") + lox::isa_name(level),
            maps ? Way::kParts : Way::kCall, level,
            reduces ? Threads::kOnOneCore : Threads::kNone);
  }
  if (workload.task == Task::kScaleAndTurn) {
    add_way("orumlox two calls", Way::kParts, best, Threads::kNone);
  }
  if (maps) {
    add_way("orumlox as shipped", Way::kCall, best, Threads::kByTheClock);
  }
  if (reduces && has_workers(workload)) {
    add_way("orumlox as designed", Way::kCall, best, Threads::kByTheClock);
  }
  if (reduces && workload.src_format == VEXO_FMT_RGBA8888) {
    add_way("orumlox by parts", Way::kParts, best, Threads::kNone);
  }
  add_plain_code(workload, out);
}

}  // namespace bench
