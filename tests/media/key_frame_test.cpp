// SPDX-License-Identifier: Apache-2.0
// The key-frame detector: against the header's rules, read as bit fields, and
// against the flags that ffprobe gives every packet of real streams.
#include <orumlox/key_frame.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace lox_test {
namespace {

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

class KeyFrame : public SeededTest {
 protected:
  // The answer for a copy that ends at an inaccessible page.
  int answer(uint32_t type, const Bytes &b) {
    buffer_.reset(b.size());
    std::copy(b.begin(), b.end(), buffer_.data());
    return mlox_is_vkeyfrm(type, buffer_.data(),
                           static_cast<int32_t>(b.size()));
  }

  // Every type's answer is the rule's: 0 too where a byte is not there.
  void check(const Bytes &b, uint32_t first = 101, uint32_t last = 123) {
    for (uint32_t type = first; type <= last; ++type) {
      int expected = 0;
      try {
        expected = rule(type, b);
      } catch (const std::out_of_range &) {
      }
      ASSERT_EQ(answer(type, b), expected)
          << "type " << type << ", bytes " << testing::PrintToString(b);
    }
  }

 private:
  GuardedBuffer buffer_;
};

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

TEST_F(KeyFrame, OfKnownFrames) {
  for_each_entry(kFrames, [&](uint32_t code, const std::string &entry) {
    const Bytes b = bytes_of(entry);
    EXPECT_EQ(answer(code, b), entry.back() - '0') << code << ": " << entry;
    check(b, 0, 300);
    for (const uint32_t high : {0x100u, 0x10000u, 0x80000000u, 0xFFFFFF00u}) {
      EXPECT_EQ(answer(code + high, b), 0);
    }
    for (const int32_t length : {0, -1, -4096, INT32_MIN}) {
      EXPECT_EQ(mlox_is_vkeyfrm(code, b.data(), length), 0);
      EXPECT_EQ(mlox_is_vkeyfrm(code, nullptr, length), 0);
    }
  });
}

// Bytes of which start codes and headers are made mostly, zeros alone, or what
// begins no start code, and from somewhere on a frame's beginning, cut off too.
TEST_F(KeyFrame, OfRandomBytes) {
  const Bytes likely = bytes_of(
      "00000000000001018082838485861C1E029D2AB62026654167403F0C10706088");
  std::vector<Bytes> frames;
  for_each_entry(kFrames, [&](int, const std::string &entry) {
    frames.push_back(bytes_of(entry));
  });
  for (size_t round = 0; round < 17000; ++round) {
    const size_t long_size = round % 32 == 0 ? 4099 : 1000;
    Bytes b(round < 14000 ? round % 40 + 1 : long_size);
    for (uint8_t &byte : b) {
      const uint64_t word = random.next();
      byte = static_cast<uint8_t>(round % 3 == 0   ? word | 0x10
                                  : round % 3 == 1 ? 0
                                  : word & 0xF00   ? likely[word % 32]
                                                   : word);
    }
    const Bytes &frame =
        frames[static_cast<size_t>(random.next()) % frames.size()];
    const size_t p = round % b.size();
    if (round % 7 != 0) {
      std::copy_n(frame.begin(), std::min(frame.size(), b.size() - p), &b[p]);
    }
    ASSERT_NO_FATAL_FAILURE(check(b)) << "round " << round;
  }
}

TEST_F(KeyFrame, OfRealStreams) {
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
