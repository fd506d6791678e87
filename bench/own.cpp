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

void add_plain_code(const Job &job, Contenders *out) {
  if (job.task == kFindKey) {
    add(out, "plain loop", 0, [=](uint8_t *s, uint8_t *d) {
      *d = static_cast<uint8_t>(
          plain_is_key_frame(job.option, s, int32_t{kMediaBytes}));
    });
  }
  if (job.task != kReadBits) return;
  for (const BitReader reader : {BitReader::kInlined, BitReader::kCalled}) {
    if (reader == BitReader::kCalled && job.option > 0) continue;
    add(out, reader == BitReader::kInlined ? "inlined" : "called", 0,
        [=](uint8_t *s, uint8_t *d) {
          const uint32_t sum = read_fields(job.option, reader, s);
          std::memcpy(d, &sum, sizeof(sum));
        });
  }
}

}  // namespace

void add_own(const Job &job, Contenders *out) {
  const int best = lox::isa_best();
  const auto add_way = [&](const std::string &name, Way way, int level,
                           Threads threads) {
    out->push_back({name, 0, [=](bool) { return own_work(job, way); }, -1, -1,
                    level, threads});
  };
  const bool maps = job.task == kToneMap;
  const bool reduces = job.task == kReduce;
  // What is the same in every form has one row.
  const int least = job.is_setup() || job.task == kReadBits ? best : 0;
  for (int level = best; level >= least; --level) {
    add_way(level == best ? "orumlox"
                          : std::string("orumlox ") + lox::isa_name(level),
            maps ? Way::kParts : Way::kCall, level,
            reduces ? Threads::kOnOneCore : Threads::kNone);
  }
  if (job.task == kScaleAndTurn) {
    add_way("orumlox two calls", Way::kParts, best, Threads::kNone);
  }
  if (maps) {
    add_way("orumlox as shipped", Way::kCall, best, Threads::kByTheClock);
  }
  const bool rgba = job.src_format == VEXO_FMT_RGBA8888;
  // With a factor chroma has a thread, unless block means do the whole job.
  if (reduces && (rgba || (job.option > 0 && !job.is_means()))) {
    add_way("orumlox as designed", Way::kCall, best, Threads::kByTheClock);
  }
  if (reduces && rgba) {
    add_way("orumlox by parts", Way::kParts, best, Threads::kNone);
  }
  add_plain_code(job, out);
}

}  // namespace bench
