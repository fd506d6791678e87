// SPDX-License-Identifier: Apache-2.0
// Bits one by one, media types by the lists, key frames by bit fields.
#include <orumlox/bitstream.h>
#include <orumlox/key_frame.h>
#include <orumlox/media_type.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#include "rules/rules.h"

namespace lox_test {
namespace {

// --- readers -----------------------------------------------------------------

// Consumes the next bit; else 0, with the refill's code, -1 if it has none.
template <bool kLittle>
bool take(mlox_bsr *r, uint32_t *bit, int32_t *code = nullptr) {
  if (r->bits == 0) {
    const int32_t status = r->refill(r, 4);
    if (code != nullptr) *code = status != 0 ? status : -1;
    if (status != 0 || r->bits == 0) return false;
  }
  *bit = kLittle ? r->cache & 1 : r->cache >> 31;
  r->cache = kLittle ? r->cache >> 1 : r->cache << 1;
  --r->bits;
  return true;
}
template <bool kLittle>
uint32_t read(const Function &, mlox_bsr *r, int32_t n) {
  uint32_t value = 0, bit = 0;
  for (int32_t i = 0; i < n; ++i) {
    if (!take<kLittle>(r, &bit)) return MLOX_BSR_END;
    // The last 32 count.
    if (kLittle) {
      value = i < 32 ? value | bit << i : value >> 1 | bit << 31;
    } else {
      value = value << 1 | bit;
    }
  }
  return value;
}
uint32_t read1(const Function &f, mlox_bsr *r) { return read<false>(f, r, 1); }
int32_t read1_value(const Function &, mlox_bsr *r, uint8_t *value) {
  uint32_t bit = 0;
  if (!take<false>(r, &bit)) return -1;
  *value = static_cast<uint8_t>(bit);
  return 0;
}
template <bool kLittle>
int32_t skip(const Function &, mlox_bsr *r, int32_t n) {
  uint32_t bit = 0;
  int32_t code = 0;
  for (; n > 0; --n) {
    if (!take<kLittle>(r, &bit, &code)) return code;
  }
  return r->bits;
}
uint32_t skip_peek(const Function &, mlox_bsr *r, int32_t n, int32_t m) {
  uint32_t bit = 0;
  for (; n > 0; --n) {
    if (!take<false>(r, &bit)) return 0;
  }
  while (r->bits < m && r->bits <= 24) {
    const uint32_t cache = r->cache;
    const int32_t held = r->bits;
    const bool loaded = r->refill(r, (32 - held) / 8) == 0 && r->bits > 0;
    const uint32_t more = loaded ? r->cache : 0;
    r->cache = cache | (held < 32 ? more >> held : 0);
    r->bits = held + (loaded ? r->bits : 0);
    if (!loaded) break;
  }
  // Behind the cache comes the byte at `next`.
  uint64_t bits = uint64_t{r->cache} << 32;
  if (r->next <= r->last) bits |= uint64_t{*r->next} << (56 - r->bits);
  return static_cast<uint32_t>(bits >> (64 - m));
}
template <bool kLittle>
void align(const Function &f, mlox_bsr *r) {
  skip<kLittle>(f, r, r->bits % 8);
}
template <bool kLittle>
int32_t flush(const Function &, mlox_bsr *r, int32_t bytes) {
  r->cache = 0;
  r->bits = 0;
  for (int i = 0; i < std::min(bytes, 4) && r->next <= r->last; ++i) {
    r->cache |= uint32_t{*r->next++} << (kLittle ? 8 * i : 24 - 8 * i);
    r->bits += 8;
  }
  return r->bits > 0 ? 0 : -1;
}

// --- the writer --------------------------------------------------------------

int32_t write(const Function &, mlox_bsw *w, uint32_t value, int32_t n) {
  if (w->current > w->last) return -1;
  for (int32_t i = std::min(n, 32); i-- > 0;) {
    *w->current = static_cast<uint8_t>(*w->current << 1 | (value >> i & 1));
    if (--w->free > 0) continue;
    w->free = 8;
    if (w->on_byte != nullptr) w->on_byte(w);
    ++w->current;
  }
  return 0;
}
int32_t write1(const Function &f, mlox_bsw *w, uint32_t bit) {
  return write(f, w, bit, 1);
}

// --- numbers -----------------------------------------------------------------

uint32_t length(uint64_t x) { return x == 0 ? 0 : 1 + length(x >> 1); }
uint32_t floor_log2(const Function &, uint32_t x) { return length(x) - 1; }
uint32_t ceil_log2(const Function &, uint32_t x) {
  return x == 0 ? UINT32_MAX : length(uint64_t{x} - 1);
}
uint32_t leading_zeros(const Function &, uint32_t x) { return 32 - length(x); }

// By media type: words of four characters, _ for a space, or tags behind a #.
constexpr char kLists[] =
    "102: M4S2 m4s2 DX50 dx50 FMP4 DIV4 div4 XVID xvid DIVX divx MP4V mp4v "
    "103: H263 d263 h263 s263 104: avc1 AVC1 avcC H264 h264 X264 x264 "
    "105: WMV1 wmv1 106: WMV2 wmv2 107: WMV3 wmv3 110: DIV3 div3 111: FLV1 "
    "113: RV10 114: RV20 115: RV30 116: RV40 117: MP43 mp43 "
    "118: WVC1 wvc1 vc-1 119: VP80 121: VP90 120: hvc1 hev1 hvcC smhC "
    "122: av01 av1C 300: #1 301: #6 302: #7 304: #80 305: #85 "
    "306: #255 aac_ mp4a 307: #8192 ac-3 308: #8193 309: samr 310: sawb "
    "311: sqcp dqcp 312: #352 #353 313: #354 314: #355 321: evrc "
    "322: #61868 fLaC 323: #157519 329: #17 330: #2 331: sipr 332: cook "
    "334: Opus 335: DSD_ 337: ec-3 338: ac-4 "
    "3000: SSRT 3006: TX3G tx3g SBTL sbtl 3007: SASS 3008: SSSA";

// Of which a range is asked for; another code says that it is none.
template <int32_t kFirst, int32_t kEnd, int32_t kUnknown>
int32_t media_type(const Function &, int32_t word) {
  static const auto types = [] {
    std::map<uint32_t, int32_t> all;
    std::istringstream lists(kLists);
    int32_t type = 0;
    for (std::string entry; lists >> entry;) {
      if (entry.back() == ':') {
        type = stoi(entry);
        continue;
      }
      const bool tag = entry[0] == '#';
      uint32_t code = tag ? static_cast<uint32_t>(stoi(entry.substr(1))) : 0;
      for (size_t i = 4; i-- > 0 && !tag;) {
        const char character = entry[i] == '_' ? ' ' : entry[i];
        code = code << 8 | static_cast<uint8_t>(character);
      }
      all[code] = type;
    }
    return all;
  }();
  const auto found = types.find(static_cast<uint32_t>(word));
  const int32_t type = found != types.end() ? found->second : kUnknown;
  return type >= kFirst && type < kEnd ? type : kUnknown;
}
int32_t drm(const Function &, uint32_t word) {
  return word == 0x58564944 || word == 0x78766964 ? 1100 : 1299;
}

// --- key frames --------------------------------------------------------------

using Bytes = std::vector<uint8_t>;
enum : uint32_t { kMpeg4 = 102, kH263, kH264, kWmv7, kWmv8 };
enum : uint32_t { kMsMpeg4 = 110, kSorenson = 111, kVp8 = 119, kHevc, kVp9 };

// The n bits from bit `first` of byte p on; throws where there is no such byte.
int field(const Bytes &b, size_t p, size_t first, size_t n) {
  int value = 0;
  for (size_t i = first; i < first + n; ++i) {
    value = value * 2 + (b.at(p + i / 8) >> (7 - i % 8) & 1);
  }
  return value;
}

// What 00 00 at p leads to: 0 or 1, or -1 to go on.
int answer_at(uint32_t type, const Bytes &b, size_t p) {
  const int code = field(b, p, 16, 8);
  if (type == kH264) {
    const int unit = field(b, p, 27, 5);
    return code == 1 && (unit == 1 || unit == 5) ? unit == 5 : -1;
  }
  if (type == kHevc) {
    const int unit = field(b, p, 25, 6);
    const bool key = unit >= 16 && unit <= 21;
    return code == 1 && (key || unit < 10) ? key : -1;
  }
  if (type == kMpeg4) {
    if (field(b, p, 16, 16) == 0x01B6) return !field(b, p, 32, 2);
  } else if (code >> 2 == 33) {
    const bool wide = field(b, p, 24, 8) != 0 || field(b, p, 32, 1) == 1;
    return !field(b, p, wide ? 65 : 49, 2);
  }
  if (code >> 2 != 32) return -1;
  if (field(b, p, 30, 2) != 2) return 0;
  if (field(b, p, 35, 3) != 7) return !field(b, p, 38, 1);
  if (type == kMpeg4) return -1;
  return !field(b, p, field(b, p, 38, 3) == 1 ? 59 : 41, 3);
}

int rule(uint32_t type, const Bytes &b) {
  if (type == kWmv7 || type == kMsMpeg4) return !field(b, 0, 0, 2);
  if (type == kWmv8) return !field(b, 0, 0, 1);
  if (type == kVp8) return field(b, 3, 0, 24) == 0x9D012A;
  if (type == kVp9) {
    return field(b, 0, 4, 1) ? !field(b, 1, 0, 1) : !field(b, 0, 5, 1);
  }
  const bool nal = type == kH264 || type == kHevc;
  const bool mpeg4 = type == kMpeg4;
  const size_t needed = nal ? 4 : mpeg4 ? 5 : 7;
  const bool scans = nal || mpeg4 || type == kH263 || type == kSorenson;
  for (size_t p = 0; scans && p + needed <= b.size(); ++p) {
    const int answer = field(b, p, 0, 16) ? -1 : answer_at(type, b, p);
    if (answer >= 0) return answer;
  }
  return 0;
}

// 0 too where a byte is not there.
int32_t key_frame(const Function &, uint32_t type, const uint8_t *data,
                  int32_t length_of_data) {
  if (length_of_data < 1) return 0;
  try {
    return rule(type, Bytes(data, data + length_of_data));
  } catch (const std::out_of_range &) {
    return 0;
  }
}

}  // namespace

std::vector<Rule> media_rules() {
  return {rule_for(mlox_bsr_read, read<false>),
          rule_for(mlox_bsr_le_read, read<true>),
          rule_for(mlox_bsr_read1, read1),
          rule_for(mlox_bsr_read1_value, read1_value),
          rule_for(mlox_bsr_skip, skip<false>),
          rule_for(mlox_bsr_le_skip, skip<true>),
          rule_for(mlox_bsr_skip_peek, skip_peek),
          rule_for(mlox_bsr_skip_to_align8, align<false>),
          rule_for(mlox_bsr_le_skip_to_align8, align<true>),
          rule_for(mlox_bsr_flush, flush<false>),
          rule_for(mlox_bsr_le_flush, flush<true>),
          rule_for(mlox_bsw_write, write),
          rule_for(mlox_bsw_write1, write1),
          rule_for(mlox_floor_log2, floor_log2),
          rule_for(mlox_ceil_log2, ceil_log2),
          rule_for(mlox_bsr_clz_in_code, leading_zeros),
          rule_for(mlox_fcc2mt, media_type<0, 4000, 3199>),
          rule_for(mlox_fcc2mt_vid, media_type<0, 200, 299>),
          rule_for(mlox_fcc2mt_aud, media_type<300, 400, 499>),
          rule_for(mlox_fcc2mt_drm, drm),
          rule_for(mlox_fcc2mt_sub, media_type<3000, 4000, 3199>),
          rule_for(mlox_is_vkeyfrm, key_frame)};
}

}  // namespace lox_test
