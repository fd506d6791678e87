// SPDX-License-Identifier: Apache-2.0
// Bit readers and the writer, logarithms, media types, key frames; the version.
#include <orumlox/bitstream.h>
#include <orumlox/key_frame.h>
#include <orumlox/media_type.h>
#include <orumlox/version.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "cases/cases.h"

namespace lox_test {
namespace {

void require(bool condition) {
  if (!condition) std::abort();
}
// Numbers of bits, some of them none.
int32_t bits(Source &source) { return source.between(-2, 41); }

// --- readers -----------------------------------------------------------------

// A call of a reader and what it answers.
struct Read {
  AnyFunction function;
  uint32_t (*call)(const Function &f, mlox_bsr &reader, Source &source);
};
#define LOX_READ(name, ...)                                              \
  {                                                                      \
    AnyFunction(name), [](const Function &f, mlox_bsr &r, Source &s) {   \
      (void)s;                                                           \
      return static_cast<uint32_t>(f.as<decltype(name)>()(__VA_ARGS__)); \
    }                                                                    \
  }
#define LOX_ALIGN(name)                                               \
  {                                                                   \
    AnyFunction(name), [](const Function &f, mlox_bsr &r, Source &) { \
      f.as<decltype(name)>()(&r);                                     \
      return 0U;                                                      \
    }                                                                 \
  }
const Read kReads[] = {
    LOX_READ(mlox_bsr_read, &r, bits(s)),
    LOX_READ(mlox_bsr_read1, &r),
    {AnyFunction(mlox_bsr_read1_value),
     [](const Function &f, mlox_bsr &r, Source &) {
       uint8_t bit = 2;
       const int32_t status = f.as<decltype(mlox_bsr_read1_value)>()(&r, &bit);
       require((status == 0) == (bit < 2));
       return uint32_t{bit};
     }},
    LOX_READ(mlox_bsr_skip, &r, bits(s)),
    {AnyFunction(mlox_bsr_skip_peek),
     [](const Function &f, mlox_bsr &r, Source &s) {
       const int32_t n = bits(s);
       return f.as<decltype(mlox_bsr_skip_peek)>()(&r, n, s.between(1, 32));
     }},
    LOX_READ(mlox_bsr_flush, &r, s.between(-1, 6)),
    LOX_ALIGN(mlox_bsr_skip_to_align8),
};
const Read kLittleEndianReads[] = {
    LOX_READ(mlox_bsr_le_read, &r, bits(s)),
    // No more than there is.
    LOX_READ(mlox_bsr_le_skip, &r, s.between(0, r.bits)),
    LOX_READ(mlox_bsr_le_flush, &r, s.between(-1, 6)),
    LOX_ALIGN(mlox_bsr_le_skip_to_align8),
};

// Refills that load less than they are asked for, or nothing at last.
template <mlox_bsr_refill *kRefill>
int32_t hesitant(mlox_bsr *reader, int32_t bytes) {
  return kRefill(reader, std::min(bytes, 1 + reader->size % 3));
}
template <mlox_bsr_refill *kRefill>
int32_t silent(mlox_bsr *reader, int32_t bytes) {
  kRefill(reader, bytes);
  return 0;
}
template <mlox_bsr_refill *kRefill>
int32_t frank(mlox_bsr *reader, int32_t bytes) {
  return kRefill(reader, std::min(bytes, 1)) == 0 ? 0 : -7;
}

template <size_t kCount>
void reads(const Function &function, const Read (&calls)[kCount],
           mlox_bsr_refill *refill, Source &source, Sink &sink) {
  const int32_t size =
      source.one_in(16) ? source.between(INT32_MIN, 0) : source.between(1, 24);
  Buffer bytes(source, static_cast<size_t>(std::max(size, 1)));
  mlox_bsr r;
  std::memset(&r, 0xA5, sizeof r);
  mlox_bsr_init(&r, bytes.data(), size, refill);
  require(r.cache == 0 && r.bits == 0 && r.size == size &&
          r.start == bytes.data() && r.next == r.start &&
          r.last == r.start + std::max(size, 0) - 1 &&
          r.refill == (refill ? refill : mlox_bsr_flush));
  for (int32_t n = source.between(1, 24); n > 0; --n) {
    const Read *call = &source.one_of(calls);
    for (const Read &own : calls) {
      if (own.function == function.address && source.one_in(2)) call = &own;
    }
    const bool own = call->function == function.address;
    const Function other = {nullptr, nullptr, call->function};
    sink.add(call->call(own ? function : other, r, source));
    require(r.bits >= 0 && r.bits <= 32 && r.next <= r.last + 1);
    sink.add(r.cache);
    sink.add(static_cast<uint64_t>(r.bits) << 32 |
             static_cast<uint64_t>(r.next - r.start));
  }
}
void reader(const Function &function, Source &source, Sink &sink) {
  mlox_bsr_refill *const refills[] = {
      nullptr, mlox_bsr_flush, hesitant<mlox_bsr_flush>, silent<mlox_bsr_flush>,
      frank<mlox_bsr_flush>};
  reads(function, kReads, source.one_of(refills), source, sink);
}
void le_reader(const Function &function, Source &source, Sink &sink) {
  mlox_bsr_refill *const refills[] = {
      mlox_bsr_le_flush, hesitant<mlox_bsr_le_flush>, silent<mlox_bsr_le_flush>,
      frank<mlox_bsr_le_flush>};
  reads(function, kLittleEndianReads, source.one_of(refills), source, sink);
}

// --- the writer --------------------------------------------------------------

// Goes on at the start when the last byte is full.
void begin_again(mlox_bsw *writer) {
  if (writer->current >= writer->last) writer->current = writer->start - 1;
}

void writer(const Function &function, Source &source, Sink &sink) {
  const int32_t size = source.between(1, 16);
  Buffer bytes(source, static_cast<size_t>(size) + 4);
  const bool ring = source.one_in(2);
  mlox_bsw w;
  std::memset(&w, 0xA5, sizeof w);
  require(mlox_bsw_init(&w, bytes.data(), size, ring ? begin_again : nullptr) ==
          &w.start);
  for (int32_t n = source.between(1, 40); n > 0; --n) {
    const auto value = static_cast<uint32_t>(source.any());
    const bool single = source.one_in(2);
    const char *const name = single ? "mlox_bsw_write1" : "mlox_bsw_write";
    const bool own = std::strcmp(function.name, name) == 0;
    const Function other = {
        name, nullptr,
        single ? AnyFunction(mlox_bsw_write1) : AnyFunction(mlox_bsw_write)};
    const Function &f = own ? function : other;
    sink.add(static_cast<uint32_t>(
        single ? f.as<decltype(mlox_bsw_write1)>()(&w, value)
               : f.as<decltype(mlox_bsw_write)>()(&w, value, bits(source))));
    require(w.free >= 1 && w.free <= 8 && w.current <= w.last + 5);
    sink.add(static_cast<uint64_t>(w.current - w.start) * 8 +
             static_cast<uint64_t>(w.free));
  }
  sink.add(bytes.data(), bytes.size());
}

// --- numbers -----------------------------------------------------------------

void number(const Function &function, Source &source, Sink &sink) {
  const uint32_t x =
      static_cast<uint32_t>(source.any()) >> source.between(0, 31);
  // Powers of two and what is next to them.
  const uint32_t power = uint32_t{1} << source.between(0, 31);
  const uint32_t near = power + source.between(-1, 1);
  sink.add(
      function.as<decltype(mlox_ceil_log2)>()(source.one_in(2) ? x : near));
}

constexpr char kFourccs[] =
    "M4S2m4s2DX50dx50FMP4DIV4div4XVIDxvidDIVXdivxMP4Vmp4vH263d263h263s263avc1"
    "AVC1avcCH264h264X264x264WMV1wmv1WMV2wmv2WMV3wmv3DIV3div3FLV1RV10RV20RV30"
    "RV40MP43mp43WVC1wvc1vc-1VP80VP90hvc1hev1hvcCsmhCav01av1Caac mp4aac-3fLaC"
    "samrsawbsqcpdqcpevrcsiprcookOpusDSD ec-3ac-4SSRTTX3Gtx3gSBTLsbtlSASSSSSA";
static_assert(sizeof kFourccs % 4 == 1);
template <class Word>
void type_of(const Function &function, Source &source, Sink &sink) {
  constexpr int32_t kTags[] = {0, 250, 352, 8192, 61868, 157519};
  for (int n = 0; n < 32; ++n) {
    const int32_t kind = source.between(0, 7);
    const int32_t tag = source.one_of(kTags);
    int32_t word = tag + source.between(-3, 90);
    if (kind < 5) {
      constexpr int32_t kCount = (sizeof kFourccs - 1) / 4;
      const char *const text = kFourccs + 4 * source.between(0, kCount - 1);
      word = 0;
      for (int i = 3; i >= 0; --i) word = word << 8 | text[i];
      if (kind == 0) word ^= 1 << source.between(0, 30);
    } else if (kind == 5) {
      word = source.any();
    }
    sink.add(static_cast<uint32_t>(
        function.as<int32_t(Word)>()(static_cast<Word>(word))));
  }
}

// --- key frames --------------------------------------------------------------

// A frame's beginning, cut off anywhere or not, behind some bytes that tell
// nothing or at once, and bytes that headers are made of.
void key_frame(const Function &function, Source &source, Sink &sink) {
  using namespace std::string_view_literals;
  constexpr std::string_view kStarts[] = {"\0\0\1\x65"sv,
                                          "\0\0\1\x2A"sv,
                                          "\0\0\1\xB6\x10"sv,
                                          "\0\0\x80\2\x0C\0\0"sv,
                                          "\0\0\x80\2\x1C\x0F\0"sv,
                                          "\0\0\x80\2\x1C\x80\0\4"sv,
                                          "\0\0\x84\0\x7F\0\x9F"sv,
                                          "\0\0\x87\4\0\0\x60\0\x9F"sv,
                                          "\0\0\x84\0\x80\0\0\0\x40"sv,
                                          "\1\2\3\x9D\1\x2A"sv,
                                          "\x88\x80"sv};
  constexpr uint8_t kCodes[] = {0,    0,    0,    0,    1,    0x05, 0x01, 0x26,
                                0xB6, 0x80, 0x81, 0x84, 0x02, 0x1C, 0x9D, 0x2A};
  const size_t head =
      source.one_in(2) ? 0 : source.between(0, source.one_in(4) ? 1500 : 200);
  const std::string_view whole = source.one_of(kStarts);
  const std::string_view start = whole.substr(0, source.between(0, 12));
  const auto tail =
      static_cast<size_t>(source.one_in(2) ? 0 : source.between(0, 20));
  Buffer data(source, head + start.size() + tail);
  std::copy(start.begin(), start.end(), data.data() + head);
  // Another code, often by one bit.
  if (!start.empty() && source.one_in(2)) {
    const auto at = static_cast<size_t>(
        source.between(0, static_cast<int32_t>(start.size()) - 1));
    data.data()[head + at] ^= static_cast<uint8_t>(1 << source.between(0, 7));
  }
  for (size_t i = head + start.size(); i < data.size(); ++i) {
    const int32_t byte = source.between(-128, 255);
    data.data()[i] = static_cast<uint8_t>(byte < 0 ? kCodes[byte & 15] : byte);
  }
  const auto length = static_cast<int32_t>(data.size());
  for (uint32_t type = 100; type < 125; ++type) {
    const int32_t answer =
        function.as<decltype(mlox_is_vkeyfrm)>()(type, data.data(), length);
    require(answer >> 1 == 0);
    sink.add(static_cast<uint32_t>(answer));
  }
  const auto other = static_cast<uint32_t>(source.any());
  sink.add(static_cast<uint32_t>(
      mlox_is_vkeyfrm(other, data.data(), source.between(INT32_MIN, 0))));
}

// Its digest is that of all versions.
void version(const Function &function, Source &, Sink &sink) {
  const int32_t now = ORUMLOX_VERSION_MAJOR * 10000 +
                      ORUMLOX_VERSION_MINOR * 100 + ORUMLOX_VERSION_PATCH;
  require(function.as<decltype(vexo_version)>()() == now);
  sink.add(1);
}

const Function kFunctions[] = {
    LOX_FUNCTION(reader, mlox_bsr_init),
    LOX_FUNCTION(reader, mlox_bsr_read),
    LOX_FUNCTION(reader, mlox_bsr_read1),
    LOX_FUNCTION(reader, mlox_bsr_read1_value),
    LOX_FUNCTION(reader, mlox_bsr_skip),
    LOX_FUNCTION(reader, mlox_bsr_skip_peek),
    LOX_FUNCTION(reader, mlox_bsr_flush),
    LOX_FUNCTION(reader, mlox_bsr_skip_to_align8),
    LOX_FUNCTION(le_reader, mlox_bsr_le_read),
    LOX_FUNCTION(le_reader, mlox_bsr_le_skip),
    LOX_FUNCTION(le_reader, mlox_bsr_le_flush),
    LOX_FUNCTION(le_reader, mlox_bsr_le_skip_to_align8),
    LOX_FUNCTION(writer, mlox_bsw_init),
    LOX_FUNCTION(writer, mlox_bsw_write),
    LOX_FUNCTION(writer, mlox_bsw_write1),
    LOX_FUNCTION(number, mlox_ceil_log2),
    LOX_FUNCTION(number, mlox_floor_log2),
    LOX_FUNCTION(number, mlox_bsr_clz_in_code),
    LOX_FUNCTION(type_of<int32_t>, mlox_fcc2mt),
    LOX_FUNCTION(type_of<int32_t>, mlox_fcc2mt_vid),
    LOX_FUNCTION(type_of<int32_t>, mlox_fcc2mt_aud),
    LOX_FUNCTION(type_of<uint32_t>, mlox_fcc2mt_drm),
    LOX_FUNCTION(type_of<int32_t>, mlox_fcc2mt_sub),
    LOX_FUNCTION(key_frame, mlox_is_vkeyfrm),
    LOX_FUNCTION(version, vexo_version),
};

}  // namespace

const Family media_family = make_family("media", 500, kFunctions);

}  // namespace lox_test
