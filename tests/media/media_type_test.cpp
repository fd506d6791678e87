// SPDX-License-Identifier: Apache-2.0
// Media type codes: the lists of the header, what is next to their entries, and
// words that are in none.
#include <orumlox/media_type.h>

#include <cstdint>
#include <map>
#include <sstream>
#include <string>

#include "support/random.h"

namespace lox_test {
namespace {

static_assert(MLOX_MT_VIDEO_FIRST == 102 && MLOX_MT_VIDEO_LAST == 122);
static_assert(MLOX_MT_AUDIO_FIRST == 300 && MLOX_MT_AUDIO_LAST == 338);
static_assert(MLOX_MT_SUBTITLE_FIRST == 3000 && MLOX_MT_SUBTITLE_LAST == 3008);
static_assert(MLOX_MT_VIDEO_UNKNOWN == 299 && MLOX_MT_AUDIO_UNKNOWN == 499);
static_assert(MLOX_MT_SUBTITLE_UNKNOWN == 3199 && MLOX_MT_DRM_UNKNOWN == 1299);

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

class MediaType : public SeededTest {
 protected:
  MediaType() {
    std::istringstream lists(kLists);
    int32_t type = 0;
    for (std::string entry; lists >> entry;) {
      const bool tag = entry[0] == '#';
      uint32_t word = tag ? static_cast<uint32_t>(stoi(entry.substr(1))) : 0;
      for (size_t i = 4; i-- > 0 && !tag;) {
        const char character = entry[i] == '_' ? ' ' : entry[i];
        word = word << 8 | static_cast<uint8_t>(character);
      }
      if (entry.back() != ':') types_[word] = type;
      if (entry.back() == ':') type = stoi(entry);
    }
  }

  // All five calls' answers to a word are the lists'.
  void check(uint32_t word) {
    const auto found = types_.find(word);
    const int32_t type = found != types_.end() ? found->second : 3199;
    const auto code = static_cast<int32_t>(word);
    const bool divx = word == 0x58564944 || word == 0x78766964;
    ASSERT_EQ(mlox_fcc2mt_vid(code), type < 200 ? type : 299) << word;
    ASSERT_EQ(mlox_fcc2mt_aud(code), type / 100 == 3 ? type : 499) << word;
    ASSERT_EQ(mlox_fcc2mt_drm(word), divx ? 1100 : 1299) << word;
    ASSERT_EQ(mlox_fcc2mt_sub(code), type > 2999 ? type : 3199) << word;
    ASSERT_EQ(mlox_fcc2mt(code), type) << word;
  }

  std::map<uint32_t, int32_t> types_;
};

TEST_F(MediaType, OfTheListsAndTheirNeighbours) {
  ASSERT_EQ(types_.size(), 88u);
  for (const auto &[word, type] : types_) {
    check(__builtin_bswap32(word));
    // Every byte in each place, the right one and its other case among them.
    for (uint32_t i = 0; i < 1024; ++i) {
      const uint32_t shift = i / 256 * 8;
      check((word & ~(0xFFu << shift)) | i % 256 << shift);
    }
  }
}

TEST_F(MediaType, OfOtherWords) {
  for (uint32_t tag = 0; tag < 65536; ++tag) check(tag);
  check(UINT32_MAX);
  check(0x80000000);
  // Random bits, and random characters of the kinds that names are made of.
  static constexpr char kCharacters[] = "ACDHMPRSVWXacdhmprsvwx01234- ";
  for (int i = 0; i < 1000000; ++i) {
    auto word = static_cast<uint32_t>(random.next());
    for (int k = 0; k < 4 && i % 2 != 0; ++k) {
      word = word << 8 | static_cast<uint8_t>(kCharacters[random.next() % 29]);
    }
    check(word);
  }
}

}  // namespace
}  // namespace lox_test
