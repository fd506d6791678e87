// SPDX-License-Identifier: Apache-2.0
//
// vexo keyframes on streams of a few bytes, each frame by itself; vexo fourcc.
#include "tool_runner.h"

namespace tool {
namespace {

// Of hexadecimal digits, with spaces between them.
std::string bytes(std::string hex) {
  std::string out;
  std::erase(hex, ' ');
  for (size_t i = 0; i < hex.size(); i += 2) {
    out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return out;
}

// The FourCC is that of IVF, none that of a raw stream. Frames end with | or,
// if they are key frames, with k.
struct Stream {
  std::string name, codec, fourcc, frames;
};

const Stream kStreams[] = {
    // Parameter sets and two slices; filler and zeros, which begin no picture;
    // a delimiter and SEI; partitions; a slice that lacks the first one.
    {"a.264", "h264", "",
     "00000001 6742 000001 68BB 000001 6588 00000001 6540 k 00000001 419A "
     "000001 4140 000001 0CFF 0000 | 00000001 0910 000001 0605 000001 2588 k "
     "000001 02E0 000001 03E0 | 000001 0930 000001 4140 000001 0A |"},
    // A lost slice; a suffix SEI and another layer, which begin no picture.
    {"a.hevc", "hevc", "",
     "000001 020150 | 00000001 4001 000001 4201 000001 4401 000001 2601AF k "
     "000001 0201D0 000001 020150 000001 500184 | 00000001 460110 "
     "000001 2A01AC k 000001 4E01 000001 120180 000001 020980 000001 4A01 |"},
    {"a.M4V", "mpeg4", "",
     "000001B0 01 000001 2008 000001B6 10 k 000001B6 5000 | "
     "000001B3 1007 000001B6 3F 000001B1 k"},
    // A group of blocks begins no picture.
    {"a.h263", "h263", "",
     "000080020C1112 000084020E33 k 000083020E1112 | 0000810208 1112 k"},
    {"a.ivf", "vp8", "VP80", "1002009D012A10 k 31000007 | |"},
    {"a", "vp9", "VP90", "8249 k 860040 |"},
    {"b", "h264", "H264", "0000016540 k 000001419A |"}};

using StreamTest = ToolTest;

TEST_F(StreamTest, KeyFramesOfEveryCodec) {
  for (const auto &[name, codec, fourcc, frames] : kStreams) {
    const bool ivf = !fourcc.empty();
    std::string lines, file;
    if (ivf) file = bytes("444B4946 0000 2400") + fourcc + noise(24, 1);
    size_t keys = 0, number = 0;
    for (size_t at = 0, end; at < frames.size(); at = end + 1) {
      end = frames.find_first_of("k|", at);
      const std::string frame = bytes(frames.substr(at, end - at));
      if (ivf) file += static_cast<char>(frame.size()) + std::string(11, '\0');
      const bool key = frames[end] == 'k';
      char line[99];
      std::snprintf(line, sizeof line, "%6zu %10zu %8zu %s\n", number++,
                    file.size(), frame.size(), key ? "key" : "-");
      lines += line;
      file += frame;
      keys += key;
    }
    lines += codec + ", frames: " + std::to_string(number) +
             ", key frames: " + std::to_string(keys) + "\n";
    put(name, file);
    EXPECT_EQ(shell("vexo keyframes " + name).out, lines);
    EXPECT_EQ(shell("vexo keyframes - <" + name + " --codec " + codec).out,
              lines);
  }
  EXPECT_EQ(
      shell("vexo keyframes a.M4V --json").out,
      "{\n  \"codec\": \"mpeg4\",\n  \"frames\": [\n    "
      "{\"number\": 0, \"offset\": 0, \"size\": 15, \"key\": true},\n    "
      "{\"number\": 1, \"offset\": 15, \"size\": 6, \"key\": false},\n    "
      "{\"number\": 2, \"offset\": 21, \"size\": 15, \"key\": true}\n"
      "  ],\n  \"key_frames\": 2\n}\n");
}

// Streams are read in pieces: the second frame begins around the end of one,
// the third is longer than some.
TEST_F(StreamTest, LongStreams) {
  const std::string head = bytes("00000001 6742 000001 6588");
  for (size_t first = 65523; first < 65539; ++first) {
    std::string raw, ivf = bytes("444B4946 0000 2000") + "H264" + noise(20, 1);
    std::string of_raw, of_ivf;
    for (const size_t size : {first, size_t{20}, size_t{1234567}}) {
      const std::string key = std::to_string(size) + " key\n";
      const std::string frame = head + std::string(size - head.size(), 'x');
      of_raw += std::to_string(raw.size()) + " " + key;
      raw += frame;
      for (int i = 0; i < 12; ++i) {
        ivf += i < 4 ? static_cast<char>(size >> 8 * i & 255) : '\0';
      }
      of_ivf += std::to_string(ivf.size()) + " " + key;
      ivf += frame;
    }
    put("a.264", raw);
    put("a.ivf", ivf);
    const std::string places = " | head -n 3 | sed 's/^ *. *//; s/  */ /g'";
    EXPECT_EQ(shell("vexo keyframes a.264" + places).out, of_raw);
    EXPECT_EQ(shell("vexo keyframes a.ivf" + places).out, of_ivf);
  }
}

TEST_F(StreamTest, FourCharactersAndNumbers) {
  EXPECT_EQ(shell("vexo fourcc divx").out,
            "video     102 MLOX_MT_VIDEO_MPEG4\n"
            "audio     499 MLOX_MT_AUDIO_UNKNOWN\n"
            "drm      1100 MLOX_MT_DRM_DIVX\n"
            "subtitle 3199 MLOX_MT_SUBTITLE_UNKNOWN\n"
            "combined  102 MLOX_MT_VIDEO_MPEG4\n");
  const std::pair<std::string, std::string> cases[] = {
      {"aac", "audio 306 MLOX_MT_AUDIO_AAC"},
      {"8192", "audio 307 MLOX_MT_AUDIO_AC3"},
      {"0x2000", "audio 307 MLOX_MT_AUDIO_AC3"},
      {"8192 --text", ""},
      {"SASS", "subtitle 3007 MLOX_MT_SUBTITLE_ASS"}};
  for (const auto &[code, known] : cases) {
    const std::string command = "vexo fourcc " + code + " | grep -v UNK";
    EXPECT_EQ(shell(command + " | head -n 1 | xargs").out, known + "\n");
  }
}

}  // namespace
}  // namespace tool
