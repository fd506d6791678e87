// SPDX-License-Identifier: Apache-2.0
//
// vexo info: what a file says of itself and what the tool makes of that.
#include <cstdio>

#include "commands.h"
#include "error.h"
#include "formats.h"
#include "json.h"
#include "orumlox/rot.h"
#include "times.h"
#include "tonemap.h"
#include "video.h"

namespace vexo {
namespace {

constexpr const char *kInfoHelp =
    R"(Says what is in a file: streams, sizes, colours, turns, frames.

Light levels, length and key frames are said, too, and what the pixels are.

Nothing but the first frame of each stream is decoded, but the whole file is
read. "taken as" is the standard that other commands convert by.

  vexo info clip.mp4
  vexo info photo.jpg --json)";

struct InfoOptions {
  std::string path;
  bool json = false;
};

// Clockwise, in degrees, after a mirroring if there is one.
int degrees(const StreamInfo &info) {
  int sum = 0;
  for (const uint32_t turn : info.turns) {
    sum += turn == VEXO_ROT_90L    ? 270
           : turn == VEXO_ROT_90R  ? 90
           : turn == VEXO_ROT_180  ? 180
           : turn == VEXO_ROT_VERT ? 180
                                   : 0;
  }
  return sum % 360;
}

bool mirrored(const StreamInfo &info) {
  return info.turns[0] == VEXO_ROT_HORI || info.turns[0] == VEXO_ROT_VERT;
}

std::string ratio_text(const Ratio &ratio, const char *between) {
  return std::to_string(ratio.num) + between + std::to_string(ratio.den);
}

void print_video(const StreamFacts &stream) {
  std::FILE *const out = standard_output();
  const StreamInfo &info = stream.info;
  std::fprintf(out, ", %dx%d %s", info.width, info.height,
               stream.pixels.c_str());
  if (info.rate.num > 0) {
    std::fprintf(out, ", %.3f frames/s",
                 static_cast<double>(info.rate.num) / info.rate.den);
  }
  if (info.aspect.num > 0 && info.aspect.num != info.aspect.den) {
    std::fprintf(out, ", pixels %s", ratio_text(info.aspect, ":").c_str());
  }
  if (degrees(info) != 0 || mirrored(info)) {
    std::fprintf(out, ",%s turned by %d degrees",
                 mirrored(info) ? " mirrored," : "", degrees(info));
  }
  std::fprintf(out, "\n    %s\n    taken as %s", describe(info.colour).c_str(),
               standard_name(info.color_std));
  if (info.colour.is_hdr()) {
    std::fprintf(out, ", tone mapped as %s",
                 mapping_text({}, info.colour).c_str());
  }
  std::fprintf(out, "\n    %lld frames, %zu key frames",
               static_cast<long long>(stream.frames), stream.key_frames.size());
  constexpr size_t kMost = 8;
  for (size_t i = 0; i < stream.key_frames.size() && i < kMost; ++i) {
    std::fprintf(out, "%s %s", i == 0 ? ":" : ",",
                 time_text(stream.key_frames[i], 2).c_str());
  }
  if (stream.key_frames.size() > kMost) std::fprintf(out, ", ...");
}

void print_facts(const std::string &name, const FileFacts &facts) {
  std::FILE *const out = standard_output();
  std::fprintf(out, "%s: %s", name.c_str(), facts.container.c_str());
  if (facts.duration > 0) {
    std::fprintf(out, ", %s", time_text(facts.duration, 2).c_str());
  }
  std::fprintf(out, "\n");
  for (size_t i = 0; i < facts.streams.size(); ++i) {
    const StreamFacts &stream = facts.streams[i];
    std::fprintf(out, "  stream %zu: %s %s", i, stream.type.c_str(),
                 stream.codec.c_str());
    if (stream.video) print_video(stream);
    std::fprintf(out, "\n");
  }
}

void print_video_json(const StreamFacts &stream) {
  const StreamInfo &info = stream.info;
  const Colour &colour = info.colour;
  std::FILE *const out = standard_output();
  std::fprintf(out, ", \"width\": %d, \"height\": %d, \"pixels\": %s",
               info.width, info.height, json_text(stream.pixels).c_str());
  std::fprintf(
      out, ", \"layout\": %s",
      info.layout == nullptr ? "null" : json_text(info.layout->token).c_str());
  std::fprintf(out,
               ", \"matrix\": \"%s\", \"range\": \"%s\", \"transfer\": \"%s\", "
               "\"primaries\": \"%s\", \"siting\": \"%s\"",
               matrix_name(colour.matrix), range_name(colour.range),
               transfer_name(colour.transfer), primaries_name(colour.primaries),
               siting_name(colour.siting));
  std::fprintf(out, ", \"standard\": %s",
               info.color_std == kNoStandard
                   ? "null"
                   : json_text(standard_name(info.color_std)).c_str());
  std::fprintf(out, ", \"rotation\": %d, \"mirrored\": %s", degrees(info),
               mirrored(info) ? "true" : "false");
  std::fprintf(out, ", \"rate\": \"%s\", \"pixel_aspect\": \"%s\"",
               ratio_text(info.rate, "/").c_str(),
               ratio_text(info.aspect, ":").c_str());
  std::fprintf(out,
               ", \"display_nits\": %.4g, \"display_black_nits\": %.4g, "
               "\"max_cll\": %d, \"max_fall\": %d",
               colour.display_peak, colour.display_black, colour.brightest,
               colour.mean);
  std::fprintf(out, ", \"frames\": %lld, \"key_frames\": [",
               static_cast<long long>(stream.frames));
  for (size_t i = 0; i < stream.key_frames.size(); ++i) {
    std::fprintf(out, "%s%.9g", i == 0 ? "" : ", ", stream.key_frames[i]);
  }
  std::fprintf(out, "]");
}

void print_facts_json(const std::string &name, const FileFacts &facts) {
  std::FILE *const out = standard_output();
  std::fprintf(out,
               "{\n  \"file\": %s,\n  \"container\": %s,\n  \"duration\": "
               "%.9g,\n  \"streams\": [",
               json_text(name).c_str(), json_text(facts.container).c_str(),
               facts.duration);
  for (size_t i = 0; i < facts.streams.size(); ++i) {
    const StreamFacts &stream = facts.streams[i];
    std::fprintf(out, "%s\n    {\"index\": %zu, \"type\": %s, \"codec\": %s",
                 i == 0 ? "" : ",", i, json_text(stream.type).c_str(),
                 json_text(stream.codec).c_str());
    if (stream.video) print_video_json(stream);
    std::fprintf(out, "}");
  }
  std::fprintf(out, "\n  ]\n}\n");
}

// Of what is read without ffmpeg's libraries.
FileFacts plain_facts(std::unique_ptr<ByteSource> source, Kind kind) {
  FileFacts facts;
  facts.container = kind_name(kind);
  const std::unique_ptr<FrameReader> reader =
      kind == Kind::kPng   ? read_png(std::move(source))
      : kind == Kind::kY4m ? read_y4m(std::move(source))
                           : read_pnm(std::move(source));
  StreamFacts stream;
  stream.type = "video";
  stream.codec = facts.container;
  stream.video = true;
  stream.info = reader->info();
  stream.pixels = stream.info.layout->token;
  Frame frame(*stream.info.layout, stream.info.width, stream.info.height,
              stream.info.color_std);
  const Ratio &rate = stream.info.rate;
  const double seconds =
      rate.num > 0 ? static_cast<double>(rate.den) / rate.num : 0;
  for (; reader->read(frame); ++stream.frames) {
    stream.key_frames.push_back(static_cast<double>(stream.frames) * seconds);
  }
  facts.duration = static_cast<double>(stream.frames) * seconds;
  facts.streams.push_back(std::move(stream));
  return facts;
}

void print_info(const InfoOptions &options) {
  auto source = std::make_unique<ByteSource>(options.path);
  const std::string name = source->name();
  const std::optional<Kind> kind = kind_of_content(*source);
  const FileFacts facts = kind ? plain_facts(std::move(source), *kind)
                               : video_facts(std::move(source));
  (options.json ? print_facts_json : print_facts)(name, facts);
  if (facts.cut) throw Error(name + " is truncated or damaged");
}

}  // namespace

void add_info(CLI::App &app) {
  const auto options = std::make_shared<InfoOptions>();
  CLI::App *const command = app.add_subcommand("info", kInfoHelp);
  command->add_option("FILE", options->path, "Input file or -")->required();
  command->add_flag("--json", options->json, "As JSON");
  command->callback([options] { print_info(*options); });
}

}  // namespace vexo
