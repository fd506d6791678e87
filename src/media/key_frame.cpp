// SPDX-License-Identifier: Apache-2.0
//
// Tells key frames by the headers of their codecs.
#include "orumlox/key_frame.h"

#include <cstddef>
#include <cstdint>

#include "media/scan_rows.h"
#include "orumlox/media_type.h"

namespace {

// What a header says.
enum Verdict { kNo = 0, kKey = 1, kScanOn };

Verdict key_if(bool key) { return key ? kKey : kNo; }

constexpr lox::StartCode kNalUnit = {0xFF, 1, 0xFF, 1};
constexpr lox::StartCode kVopOrShortHeader = {0xFF, 1, 0xFC, 0x80};
constexpr lox::StartCode kH263OrSorenson = {0xFC, 0x80, 0xFC, 0x84};

// The verdict on the first start code that has one. A start code is judged only
// where at least `least` bytes are left from it on.
template <class Judge>
int32_t scan(const uint8_t *data, int32_t length, int32_t least,
             lox::StartCode code, Judge judge) {
  const auto find = lox::scan_rows().find;
  const ptrdiff_t places = ptrdiff_t{length} - least + 1;
  for (ptrdiff_t p = 0; p < places; ++p) {
    p += find(data + p, places - p, code);
    if (p >= places) break;
    const Verdict verdict = judge(data + p, static_cast<int32_t>(length - p));
    if (verdict != kScanOn) return verdict;
  }
  return kNo;
}

Verdict h264(const uint8_t *b, int32_t) {
  const int type = b[3] & 31;
  return type == 5 ? kKey : type == 1 ? kNo : kScanOn;
}

Verdict hevc(const uint8_t *b, int32_t) {
  const int type = b[3] >> 1 & 63;
  return type >= 16 && type <= 21 ? kKey : type < 10 ? kNo : kScanOn;
}

Verdict mpeg4(const uint8_t *b, int32_t) {
  if (b[2] == 1) {
    return b[3] == 0xB6 ? key_if(b[4] < 0x40) : kScanOn;
  }
  if ((b[3] & 3) != 2) return kNo;
  return (b[4] & 0x1C) < 0x1C ? key_if((b[4] & 2) == 0) : kScanOn;
}

Verdict sorenson(const uint8_t *b, int32_t left) {
  // The place of the picture type depends on the size's form.
  const int place = b[3] != 0 || (b[4] & 0x80) != 0 ? 8 : 6;
  return key_if(place < left && (b[place] & 0x60) == 0);
}

Verdict h263(const uint8_t *b, int32_t left) {
  if (b[2] >> 2 == 33) return sorenson(b, left);
  if ((b[3] & 3) != 2) return kNo;
  if ((b[4] & 0x1C) < 0x1C) return key_if((b[4] & 2) == 0);
  // The extended picture type, behind what is optional.
  if (((b[4] & 3) << 1 | b[5] >> 7) != 1) return key_if((b[5] & 0x70) == 0);
  return key_if(left > 7 && (b[7] & 0x1C) == 0);
}

int32_t vp8(const uint8_t *b, int32_t length) {
  return length > 5 && b[3] == 0x9D && b[4] == 0x01 && b[5] == 0x2A;
}

int32_t vp9(const uint8_t *b, int32_t length) {
  if ((b[0] & 8) == 0) return (b[0] & 4) == 0;
  return length > 1 && (b[1] & 0x80) == 0;
}

}  // namespace

int32_t mlox_is_vkeyfrm(uint32_t type, const uint8_t *data, int32_t length) {
  if (length < 1) return kNo;
  switch (type) {
    case MLOX_MT_VIDEO_H264:
      return scan(data, length, 4, kNalUnit, h264);
    case MLOX_MT_VIDEO_HEVC:
      return scan(data, length, 4, kNalUnit, hevc);
    case MLOX_MT_VIDEO_MPEG4:
      return scan(data, length, 5, kVopOrShortHeader, mpeg4);
    case MLOX_MT_VIDEO_H263:
    case MLOX_MT_VIDEO_SORENSON_H263:
      return scan(data, length, 7, kH263OrSorenson, h263);
    case MLOX_MT_VIDEO_WMV7:
    case MLOX_MT_VIDEO_MSMPEG4V3:
      return data[0] < 0x40;
    case MLOX_MT_VIDEO_WMV8:
      return (data[0] & 0x80) == 0;
    case MLOX_MT_VIDEO_VP8:
      return vp8(data, length);
    case MLOX_MT_VIDEO_VP9:
      return vp9(data, length);
    default:
      return kNo;
  }
}
