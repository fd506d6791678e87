// SPDX-License-Identifier: Apache-2.0
//
// vexo keyframes: finds out what a stream is, splits it into frames and prints
// what the library says of each.
#include "keyframes.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

#include "access_units.h"
#include "error.h"
#include "io.h"
#include "orumlox/key_frame.h"
#include "orumlox/media_type.h"

namespace vexo {
namespace {

struct Codec {
  const char *name;
  int32_t type;
  // Of raw streams; codecs without one are read from IVF alone.
  std::array<const char *, 3> endings;
};

constexpr Codec kCodecs[] = {
    {"h264", MLOX_MT_VIDEO_H264, {".h264", ".264", ".avc"}},
    {"hevc", MLOX_MT_VIDEO_HEVC, {".hevc", ".265", ".h265"}},
    {"mpeg4", MLOX_MT_VIDEO_MPEG4, {".m4v", ".mpeg4", ".mp4v"}},
    {"h263", MLOX_MT_VIDEO_H263, {".h263", ".263"}},
    {"vp8", MLOX_MT_VIDEO_VP8, {}},
    {"vp9", MLOX_MT_VIDEO_VP9, {}},
};

const Codec &codec_named(const std::string &name) {
  for (const Codec &codec : kCodecs) {
    if (name == codec.name) return codec;
  }
  throw Error("--codec '" + name +
              "' is none of h264, hevc, mpeg4, h263, vp8, vp9");
}

const Codec &codec_of_path(const std::string &path) {
  for (const Codec &codec : kCodecs) {
    for (const char *const ending : codec.endings) {
      if (ending != nullptr && ends_with(path, ending)) return codec;
    }
  }
  throw Error("cannot tell the codec of '" + path + "': give --codec");
}

const Codec &codec_of_ivf(Bytes file, const std::string &name) {
  const int32_t type = mlox_fcc2mt_vid(ivf_fourcc(file));
  for (const Codec &codec : kCodecs) {
    if (type == codec.type) return codec;
  }
  throw Error(name + " is an IVF of another codec than h264, hevc, mpeg4, " +
              "h263, vp8 and vp9");
}

std::vector<uint8_t> read_all(ByteSource &source) {
  std::vector<uint8_t> bytes;
  size_t used = 0;
  do {
    bytes.resize(std::max(2 * used, size_t{1} << 20));
    used += source.read(bytes.data() + used, bytes.size() - used);
  } while (used == bytes.size());
  bytes.resize(used);
  return bytes;
}

bool is_key(const Codec &codec, Bytes frame) {
  constexpr size_t kMost = std::numeric_limits<int32_t>::max();
  return mlox_is_vkeyfrm(static_cast<uint32_t>(codec.type), frame.data(),
                         static_cast<int32_t>(std::min(frame.size(), kMost))) ==
         1;
}

void print(const Codec &codec, Bytes file, const std::vector<AccessUnit> &units,
           bool json) {
  if (json) std::printf("{\n  \"codec\": \"%s\",\n  \"frames\": [", codec.name);
  size_t keys = 0;
  for (size_t i = 0; i < units.size(); ++i) {
    const auto &[offset, size] = units[i];
    const bool key = is_key(codec, file.subspan(offset, size));
    keys += key;
    if (json) {
      std::printf(
          "%s\n    {\"number\": %zu, \"offset\": %zu, \"size\": %zu, \"key\": "
          "%s}",
          i == 0 ? "" : ",", i, offset, size, key ? "true" : "false");
    } else {
      std::printf("%6zu %10zu %8zu %s\n", i, offset, size, key ? "key" : "-");
    }
  }
  if (json) {
    std::printf("\n  ],\n  \"key_frames\": %zu\n}\n", keys);
  } else {
    std::printf("%s, frames: %zu, key frames: %zu\n", codec.name, units.size(),
                keys);
  }
  flush_standard_output();
}

}  // namespace

void print_key_frames(const std::string &path, const std::string &codec,
                      bool json) {
  const Codec *asked = codec.empty() ? nullptr : &codec_named(codec);
  ByteSource source(path);
  const std::vector<uint8_t> file = read_all(source);
  if (file.empty()) throw Error(source.name() + " is empty");
  std::vector<AccessUnit> units;
  if (is_ivf(file)) {
    const Codec &held = codec_of_ivf(file, source.name());
    if (asked != nullptr && asked != &held) {
      throw Error(source.name() + " holds " + held.name + ", not " +
                  asked->name);
    }
    asked = &held;
    if (!split_ivf(file, &units)) source.truncated();
    if (units.empty()) throw Error(source.name() + " has no frame");
  } else {
    if (asked == nullptr) asked = &codec_of_path(path);
    if (asked->endings[0] == nullptr) {
      throw Error(source.name() + " is no IVF, the only file that " +
                  asked->name + " is read from");
    }
    units = split_stream(asked->type, file);
  }
  if (units.empty()) {
    throw Error(source.name() + " is not a raw stream of " + asked->name +
                ", or it has no frame");
  }
  print(*asked, file, units, json);
}

}  // namespace vexo
