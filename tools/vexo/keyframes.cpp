// SPDX-License-Identifier: Apache-2.0
//
// vexo keyframes: finds out what a stream is, splits it into frames and prints
// what the library says of each.
#include <array>
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "access_units.h"
#include "commands.h"
#include "error.h"
#include "io.h"
#include "orumlox/key_frame.h"
#include "orumlox/media_type.h"

namespace vexo {
namespace {

constexpr const char *kKeyframesHelp =
    R"(Lists the frames of a compressed stream, and which are key frames.

FILE is IVF (vp8, vp9, or another of the codecs below), or a raw stream: Annex B
of h264 (.h264 .264 .avc) or hevc (.hevc .265 .h265), mpeg4 (.m4v .mpeg4 .mp4v)
or h263 (.h263 .263); - is standard input. Nothing is decoded. Lines come as
frames do; none may be longer than 64 MiB.

One line a frame: its number from 0, the offset of its first byte, its size and
key or -; then the codec and how many there are. Headers belong to the frame
that they precede; in IVF, those of the frames do not count. Fields of h264 that
are coded apart are listed apart.

  vexo keyframes clip.h264
  vexo keyframes - --codec hevc --json <clip.bin)";

struct KeyframesOptions {
  std::string path;
  // Empty: the name's ending tells it.
  std::string codec;
  bool json = false;
};

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

const Codec &codec_of_fourcc(int32_t fourcc, const std::string &name) {
  const int32_t type = mlox_fcc2mt_vid(fourcc);
  for (const Codec &codec : kCodecs) {
    if (type == codec.type) return codec;
  }
  throw Error(name + " is an IVF of another codec than h264, hevc, mpeg4, " +
              "h263, vp8 and vp9");
}

bool is_key(const Codec &codec, Bytes frame) {
  static_assert(kMaxUnitMib < 2048, "The library counts in 32 bits");
  return mlox_is_vkeyfrm(static_cast<uint32_t>(codec.type), frame.data(),
                         static_cast<int32_t>(frame.size())) == 1;
}

// The first frame and all after it.
void print_frames(const Codec &codec, UnitReader &reader, AccessUnit unit,
                  bool json) {
  std::FILE *const out = standard_output();
  if (json) {
    std::fprintf(out, "{\n  \"codec\": \"%s\",\n  \"frames\": [", codec.name);
  }
  uint64_t frames = 0;
  uint64_t keys = 0;
  do {
    const bool key = is_key(codec, unit.bytes);
    keys += key;
    const size_t size = unit.bytes.size();
    if (json) {
      std::fprintf(out,
                   "%s\n    {\"number\": %" PRIu64 ", \"offset\": %" PRIu64
                   ", \"size\": %zu, \"key\": %s}",
                   frames == 0 ? "" : ",", frames, unit.offset, size,
                   key ? "true" : "false");
    } else {
      std::fprintf(out, "%6" PRIu64 " %10" PRIu64 " %8zu %s\n", frames,
                   unit.offset, size, key ? "key" : "-");
    }
    ++frames;
  } while (!std::ferror(out) && reader.next(&unit));
  if (json) {
    std::fprintf(out, "\n  ],\n  \"key_frames\": %" PRIu64 "\n}\n", keys);
  } else {
    std::fprintf(out, "%s, frames: %" PRIu64 ", key frames: %" PRIu64 "\n",
                 codec.name, frames, keys);
  }
}

void list_frames(const KeyframesOptions &options) {
  const Codec *asked =
      options.codec.empty() ? nullptr : &codec_named(options.codec);
  ByteSource source(options.path);
  if (source.peek(1).empty()) throw Error(source.name() + " is empty");
  std::unique_ptr<UnitReader> reader;
  AccessUnit first;
  if (is_ivf(source)) {
    int32_t fourcc;
    reader = read_ivf(source, &fourcc);
    const Codec &held = codec_of_fourcc(fourcc, source.name());
    if (asked != nullptr && asked != &held) {
      throw Error(source.name() + " holds " + held.name + ", not " +
                  asked->name);
    }
    asked = &held;
    if (!reader->next(&first)) throw Error(source.name() + " has no frame");
  } else {
    if (asked == nullptr) asked = &codec_of_path(options.path);
    if (asked->endings[0] == nullptr) {
      throw Error(source.name() + " is no IVF, the only file that " +
                  asked->name + " is read from");
    }
    reader = read_stream(source, asked->type);
    if (!reader->next(&first)) {
      throw Error(source.name() + " is not a raw stream of " + asked->name +
                  ", or it has no frame");
    }
  }
  print_frames(*asked, *reader, first, options.json);
}

}  // namespace

void add_keyframes(CLI::App &app) {
  const auto options = std::make_shared<KeyframesOptions>();
  CLI::App *const command = app.add_subcommand("keyframes", kKeyframesHelp);
  command->add_option("FILE", options->path, "Input file or -")->required();
  command->add_option("--codec", options->codec,
                      "h264, hevc, mpeg4, h263; vp8 or vp9 of IVF");
  command->add_flag("--json", options->json, "As JSON");
  command->callback([options] { list_frames(*options); });
}

}  // namespace vexo
