// SPDX-License-Identifier: Apache-2.0
// Bit streams and key frames worked out by hand, and the flags that ffprobe
// gives every packet of real streams. The cases compare the rest.
#include <gtest/gtest.h>
#include <orumlox/bitstream.h>
#include <orumlox/key_frame.h>
#include <orumlox/media_type.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lox_test {
namespace {

static_assert(MLOX_MT_VIDEO_FIRST == 102 && MLOX_MT_VIDEO_LAST == 122);
static_assert(MLOX_MT_AUDIO_FIRST == 300 && MLOX_MT_AUDIO_LAST == 338);
static_assert(MLOX_MT_SUBTITLE_FIRST == 3000 && MLOX_MT_SUBTITLE_LAST == 3008);
static_assert(MLOX_MT_VIDEO_UNKNOWN == 299 && MLOX_MT_AUDIO_UNKNOWN == 499);
static_assert(MLOX_MT_SUBTITLE_UNKNOWN == 3199 && MLOX_MT_DRM_UNKNOWN == 1299);

// A source in two pieces.
constexpr uint8_t kPieces[2][3] = {{0xF0, 0x81, 0x34}, {0xA5, 0x3C, 0x0F}};
int32_t refill_pieces(mlox_bsr *reader, int32_t bytes) {
  if (reader->next > reader->last) {
    if (reader->last == kPieces[0] + 2) return -9;
    reader->next = kPieces[0];
    reader->last = kPieces[0] + 2;
  }
  return mlox_bsr_flush(reader, bytes);
}

TEST(Bitstream, KnownBytesAreRead) {
  mlox_bsr reader_;
  mlox_bsr_init(&reader_, kPieces[1], 3, refill_pieces);
  EXPECT_EQ(mlox_bsr_read(&reader_, 4), 0xAu);
  EXPECT_EQ(mlox_bsr_read(&reader_, 32), 0x53C0FF08u);
  EXPECT_EQ(mlox_bsr_skip_peek(&reader_, 1, 5), 4u);
  EXPECT_EQ(mlox_bsr_skip(&reader_, 8), 3);
  // What this refill leaves when it fails is still there.
  EXPECT_EQ(mlox_bsr_skip(&reader_, 4), -9);
  EXPECT_EQ(mlox_bsr_read(&reader_, 3), 4u);
  mlox_bsr_init(&reader_, kPieces[1], 3, mlox_bsr_le_flush);
  EXPECT_EQ(mlox_bsr_le_read(&reader_, 4), 5u);
  EXPECT_EQ(mlox_bsr_le_read(&reader_, 20), 0x0F3CAu);
  mlox_bsr_init(&reader_, kPieces[1], 3, nullptr);
  EXPECT_EQ(mlox_bsr_read(&reader_, 32), MLOX_BSR_END);
  EXPECT_EQ(reader_.cache, 0u);
  EXPECT_EQ(reader_.bits, 0);
}

TEST(Bitstream, TheWriterPutsBitsInOrder) {
  uint8_t bytes[6] = {0, 0, 0xFF, 0, 0, 0};
  mlox_bsw w;
  EXPECT_EQ(mlox_bsw_init(&w, bytes, 2, nullptr), &w.start);
  EXPECT_EQ(mlox_bsw_write(&w, 0xFFFFFFFA, 4), 0);
  EXPECT_EQ(mlox_bsw_write1(&w, 3), 0);
  EXPECT_EQ(mlox_bsw_write(&w, 0x12, 9), 0);
  // A value that begins in the last byte goes on behind it.
  EXPECT_EQ(mlox_bsw_write(&w, 0xE, 4), 0);
  EXPECT_EQ(mlox_bsw_write(&w, 0, 1), -1);
  EXPECT_EQ(bytes[0], 0xA8);
  EXPECT_EQ(bytes[1], 0x4B);
  EXPECT_EQ(bytes[2] & 3, 2);
  EXPECT_EQ(w.current, bytes + 2);
  EXPECT_EQ(w.free, 6);
}

using Bytes = std::vector<uint8_t>;

// Calls entry(type, word) for the words of a text "102: one two 103: three".
template <class Entry>
void for_each_entry(const char *text, Entry entry) {
  std::istringstream stream(text);
  uint32_t type = 0;
  for (std::string word; stream >> word;) {
    if (word.back() != ':') entry(type, word);
    if (word.back() == ':') type = static_cast<uint32_t>(std::stoi(word));
  }
}

// Of pairs of hexadecimal digits, as far as they go.
Bytes bytes_of(const std::string &hex) {
  Bytes b;
  for (size_t i = 0; i + 1 < hex.size() && hex[i] != '='; i += 2) {
    b.push_back(static_cast<uint8_t>(stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return b;
}

int answer(uint32_t type, const Bytes &b) {
  return mlox_is_vkeyfrm(type, b.data(), static_cast<int32_t>(b.size()));
}

// Bytes of a frame and the answer.
constexpr char kFrames[] =
    "104: 00000165=1 00000141=0 0000016709AA00000165=1 00000167090000000161=0 "
    "00000001=0 00000265=0 "
    "120: 00000126=1 00000102=0 000001400000012A=1 0000012C00000112=0 "
    "0000011400000126=1 "
    "102: 000001B600=1 000001B640=0 000001B6=0 000080020C=1 000083060E=0 "
    "00008001000001B600=0 000080021C000001B600=1 "
    "103: 000080020C0000=1 000080020C00=0 000080030C0000=0 000080021C0F00=1 "
    "000080021C1000=0 000080021CF000E3=1 000080021C800004=0 000080021C8000=0 "
    "111: 000084007F009F=1 00008400000020=0 00008704000060009F=1 "
    "000084008000000040=0 0000840080000000=0 "
    "105: 3F=1 40=0 110: 3F=1 40=0 106: 7F=1 80=0 "
    "119: 0102039D012A=1 0102039D012B=0 0102039D01=0 "
    "121: 80=1 84=0 88=0 8C7F=1 8880=0";

TEST(KeyFrame, OfKnownFrames) {
  for_each_entry(kFrames, [&](uint32_t code, const std::string &entry) {
    const Bytes b = bytes_of(entry);
    EXPECT_EQ(answer(code, b), entry.back() - '0') << code << ": " << entry;
    for (const uint32_t high : {0x100u, 0x10000u, 0x80000000u, 0xFFFFFF00u}) {
      EXPECT_EQ(answer(code + high, b), 0);
    }
    // Bytes beyond the length tell nothing.
    for (size_t n = 1; n < b.size(); ++n) {
      Bytes other = b;
      for (size_t i = n; i < b.size(); ++i) other[i] ^= 0xFF;
      const auto length = static_cast<int32_t>(n);
      EXPECT_EQ(mlox_is_vkeyfrm(code, b.data(), length),
                mlox_is_vkeyfrm(code, other.data(), length))
          << code << ": " << entry << ", " << n << " bytes";
    }
    for (const int32_t length : {0, -1, -4096, INT32_MIN}) {
      EXPECT_EQ(mlox_is_vkeyfrm(code, b.data(), length), 0);
      EXPECT_EQ(mlox_is_vkeyfrm(code, nullptr, length), 0);
    }
  });
}

TEST(KeyFrame, OfRealStreams) {
  constexpr char kStreams[] =
      "104: h264.h264 h264_slices.h264 120: hevc_idr.hevc hevc_cra.hevc "
      "102: mpeg4.m4v mpeg4.avi 103: h263.3gp h263_extended.mov "
      "111: sorenson.flv 105: wmv7.asf 106: wmv8.asf 110: msmpeg4.avi "
      "119: libvpx.webm 121: libvpx-vp9.webm";
  for_each_entry(kStreams, [&](uint32_t type, const std::string &name) {
    std::ifstream packets(STREAMS "/" + name + ".packets");
    int counts[2] = {};
    std::string hex;
    for (int flag; packets >> flag >> hex; ++counts[flag]) {
      EXPECT_EQ(answer(type, bytes_of(hex)), flag)
          << name << ", frame " << counts[0] + counts[1];
    }
    EXPECT_GE(counts[1], 2) << name;
    EXPECT_GE(counts[0], 20) << name;
  });
}

}  // namespace
}  // namespace lox_test
