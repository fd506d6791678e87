// SPDX-License-Identifier: Apache-2.0
#include "bench/media_bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "bench/frames.h"
#include "bench/media_work.h"
#include "common/isa.h"
#include "orumlox/key_frame.h"

namespace bench {

namespace {

// `others` names those that differ.
bool report(const std::string &what, const std::string &others) {
  const bool good = others.empty();
  std::fprintf(good ? stdout : stderr, "%-65s %s%s\n", what.c_str(),
               good ? "equal" : "NOT THE SAME WORK:", others.c_str());
  return good;
}

template <typename Run>
void add_row(const std::string &name, const Run &run) {
  benchmark::RegisterBenchmark(name.c_str(), run)
      ->MeasureProcessCPUTime()
      ->Unit(benchmark::kMicrosecond);
}

// --- bit fields ------------------------------------------------------------

constexpr struct {
  const char *name;
  BitReader reader;
} kReaders[] = {{"orumlox", BitReader::kLibrary},
                {"inlined", BitReader::kInlined},
                {"called", BitReader::kCalled}};

constexpr struct {
  const char *id;
  BitOrder order;
} kOrders[] = {{"media_bits_msb", BitOrder::kMsb},
               {"media_bits_lsb", BitOrder::kLsb}};

// Calls `each` with every order of every kind that the library has.
template <typename Each>
void for_fields(const Each &each) {
  for (const FieldKind &kind : kFieldKinds) {
    const auto fields = std::make_shared<BitFields>(kind);
    for (const auto &order : kOrders) {
      if (kind.single && order.order != BitOrder::kMsb) continue;
      each(std::string(order.id) + "/" + kind.id, fields, order.order);
    }
  }
}

// --- key frames --------------------------------------------------------------

// Level kPlain is the loop.
constexpr int kPlain = -1;

int32_t scan(const Codec &codec, int level, const uint8_t *frame) {
  constexpr auto kLength = static_cast<int32_t>(kScannedBytes);
  return level == kPlain ? plain_is_key_frame(codec.type, frame, kLength)
                         : mlox_is_vkeyfrm(codec.type, frame, kLength);
}

std::string scan_name(const Codec &codec, bool pairs) {
  return std::string("media_keyframe_") + codec.id +
         (pairs ? "_random" : "_clean");
}

std::string scanner_name(int level) {
  if (level == kPlain) return "plain loop";
  return level == lox::isa_best()
             ? "orumlox"
             : std::string("orumlox ") + lox::isa_name(level);
}

constexpr struct {
  const char *id;
  size_t count;
} kScanned[] = {{"1MiB", 1}, {"64MiB", 64}};

// Frames of one content; made when first asked for.
class ScannedFrames {
 public:
  explicit ScannedFrames(bool pairs)
      : bytes_(kScanned[1].count * kScannedBytes) {
    fill_scanned(bytes_.data(), kScannedBytes, pairs);
    for (size_t i = 1; i < kScanned[1].count; ++i) {
      std::memcpy(frame(i), frame(0), kScannedBytes);
    }
  }
  uint8_t *frame(size_t i) const { return bytes_.data() + i * kScannedBytes; }

  static const ScannedFrames &of(bool pairs) {
    static std::unique_ptr<ScannedFrames> both[2];
    if (!both[pairs]) both[pairs] = std::make_unique<ScannedFrames>(pairs);
    return *both[pairs];
  }

 private:
  Block bytes_;
};

void time_scan(benchmark::State &state, const Codec &codec, bool pairs,
               int level, size_t count) {
  const ScannedFrames &frames = ScannedFrames::of(pairs);
  lox::isa_limit(level >= 0 ? level : lox::isa_best());
  size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(scan(codec, level, frames.frame(at)));
    if (++at == count) at = 0;
  }
  lox::isa_limit(lox::isa_best());
  state.counters["pixels"] = double{kScannedBytes};
}

bool check_scans() {
  const Block frame(kScannedBytes), with_key(kScannedBytes);
  bool same = true;
  for (const bool pairs : {false, true}) {
    fill_scanned(frame.data(), kScannedBytes, pairs);
    for (const Codec &codec : kCodecs) {
      std::memcpy(with_key.data(), frame.data(), kScannedBytes);
      std::copy_n(codec.key, codec.key_size,
                  with_key.data() + kScannedBytes - codec.key_size);
      std::string others;
      for (int level = lox::isa_best(); level >= kPlain; --level) {
        lox::isa_limit(level >= 0 ? level : lox::isa_best());
        if (scan(codec, level, frame.data()) != 0 ||
            scan(codec, level, with_key.data()) != 1) {
          others += " " + scanner_name(level);
        }
      }
      same &= report(scan_name(codec, pairs), others);
    }
  }
  lox::isa_limit(lox::isa_best());
  return same;
}

}  // namespace

bool check_media() {
  bool same = true;
  for_fields([&](const std::string &name,
                 const std::shared_ptr<BitFields> &fields, BitOrder order) {
    const uint32_t expected = fields->read(BitReader::kInlined, order);
    std::string others;
    for (const auto &reader : kReaders) {
      if (fields->read(reader.reader, order) != expected) {
        others += std::string(" ") + reader.name;
      }
    }
    same &= report(name, others);
  });
  return check_scans() && same;
}

void register_media() {
  for_fields([](const std::string &name,
                const std::shared_ptr<BitFields> &fields, BitOrder order) {
    for (const auto &reader : kReaders) {
      add_row(name + "/" + reader.name, [=](benchmark::State &state) {
        for (auto _ : state) {
          benchmark::DoNotOptimize(fields->read(reader.reader, order));
        }
        state.counters["pixels"] = static_cast<double>(fields->count());
      });
    }
  });
  for (const Codec &codec : kCodecs) {
    for (const bool pairs : {false, true}) {
      for (const auto &scanned : kScanned) {
        for (int level = lox::isa_best(); level >= kPlain; --level) {
          const std::string name = scan_name(codec, pairs) + "/" + scanned.id +
                                   "/" + scanner_name(level);
          add_row(name, [=](benchmark::State &state) {
            time_scan(state, codec, pairs, level, scanned.count);
          });
        }
      }
    }
  }
}

}  // namespace bench
