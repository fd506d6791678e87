// SPDX-License-Identifier: Apache-2.0
//
// vexo thumbnail: of pictures and clips frame by frame, of videos one picture,
// of many files at once.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#include "commands.h"
#include "error.h"
#include "pick.h"
#include "progress.h"
#include "route.h"
#include "stages.h"
#include "thumbnail.h"
#include "video.h"

namespace vexo {
namespace {

constexpr const char *kThumbnailHelp =
    R"(Makes thumbnails of pictures, clips and videos.

FILES are IN and OUT, or with --out-dir any number of inputs. IN and OUT are
those of vexo convert. 4:2:0 is scaled as it is, as nv12, all else as rgba8888,
whose alpha becomes 255. --size is that before the turn; nothing is enlarged.
The thumbnail has the layout that it was scaled in and is then converted to what
OUT holds or --to says.

Of a video one picture is made: the first key frame after a tenth of its length
that is neither near black nor flat, or the frame at --at.

With --out-dir each input becomes a picture there, with its name and the ending
of --out-kind (png). What fails is said, a line a file, and the status is 1.

--prescale halves or quarters 4:2:0 by block means first: faster and coarser.

  vexo thumbnail film.mp4 film.png --fit 320x320
  vexo thumbnail film.mp4 film.png --fit 320x180 --letterbox --at 30%
  vexo thumbnail *.mp4 --out-dir thumbs --fit 256x256 -j 4)";

struct Options : ThumbnailOptions {
  std::vector<std::string> files;
  std::string folder;
};

bool holds_one(Kind kind) { return is_picture(kind) || kind == Kind::kPgm; }

// Whether a video's picture is the tool's to choose.
bool picks(const Options &options) {
  return options.at.empty() && options.frames == 0;
}

// One picture of the input, as the bytes of a file.
std::string picture_of(const Options &options, FrameReader &reader, Kind kind) {
  const StreamInfo source = taken_info(options, reader);
  Route route(
      options, kind, source, [&options] { return make_thumbnail(options); },
      Hdr::kMapped);
  Frame frame = frame_of(source);
  auto *const video = dynamic_cast<VideoReader *>(&reader);
  const bool found = video != nullptr && picks(options)
                         ? pick_frame(*video, &frame)
                         : reader.read(frame);
  if (!found) throw Error(options.in + " has no frame");
  const Frame small = frame_of(route.result());
  route.run(frame, small);
  std::string bytes;
  open_writer(kind, options.out, route.result(), options.encode)
      ->encode(small, &bytes);
  return bytes;
}

void write_file(const std::string &path, const std::string &bytes) {
  ByteSink sink(path);
  sink.write(bytes.data(), bytes.size());
  sink.commit();
}

// All frames of a picture or a clip, or one of a video.
void make_one(const Options &options) {
  const Kind kind = output_kind(options);
  const bool one = holds_one(kind) && options.frames == 0 &&
                   options.out.find('%') == std::string::npos;
  const std::shared_ptr<FrameReader> reader =
      open_reader(options, one && picks(options));
  if (one && dynamic_cast<VideoReader *>(reader.get()) != nullptr) {
    write_file(options.out, picture_of(options, *reader, kind));
  } else {
    convert(options, reader, [&options] { return make_thumbnail(options); });
  }
}

std::string base_of(const std::string &path) {
  return path.substr(path.rfind('/') + 1);
}

// Names without their endings, but with them where two files would be one.
std::vector<std::string> output_names(const Options &options,
                                      const char *ending) {
  const auto stem = [](const std::string &path) {
    const std::string base = base_of(path);
    const size_t dot = base.rfind('.');
    return dot == 0 || dot == std::string::npos ? base : base.substr(0, dot);
  };
  std::map<std::string, int> count;
  for (const std::string &file : options.files) ++count[stem(file)];
  std::vector<std::string> names;
  for (const std::string &file : options.files) {
    const std::string name = count[stem(file)] > 1 ? base_of(file) : stem(file);
    names.push_back(options.folder + "/" + name + ending);
  }
  return names;
}

void make_many(const Options &options) {
  const Kind kind =
      options.out_kind.empty() ? Kind::kPng : kind_named(options.out_kind);
  if (!holds_one(kind)) {
    throw Error(std::string("--out-dir takes pictures, not ") +
                kind_name(kind));
  }
  if (mkdir(options.folder.c_str(), 0777) != 0 && errno != EEXIST) {
    throw Error("cannot create " + options.folder + ": " +
                std::strerror(errno));
  }
  const std::vector<std::string> names =
      output_names(options, kind_ending(kind));
  // Names of outputs are no patterns here.
  const auto of_file = [&](int64_t i) {
    Options one = options;
    one.in = options.files[static_cast<size_t>(i)];
    one.out = "-";
    return one;
  };
  const int64_t count = static_cast<int64_t>(options.files.size());
  Progress progress(options.quiet, count);
  int64_t failures = 0;
  Stages stages;
  stages.read = [count](Slot &slot) { return slot.number < count; };
  const auto compute = [&](Slot &slot) {
    slot.bytes.clear();
    slot.complaint.clear();
    const Options one = of_file(slot.number);
    try {
      slot.bytes = picture_of(one, *open_reader(one, picks(one)), kind);
    } catch (const std::exception &error) {
      slot.complaint = error.what();
      // Which file it was, whatever failed.
      if (slot.complaint.find(one.in) == std::string::npos) {
        slot.complaint = one.in + ": " + slot.complaint;
      }
    }
  };
  const int threads =
      options.jobs > 0
          ? options.jobs
          : std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1,
                       64);
  stages.compute.assign(static_cast<size_t>(threads), compute);
  stages.write = [&](Slot &slot) {
    if (slot.complaint.empty()) {
      write_file(names[static_cast<size_t>(slot.number)], slot.bytes);
    } else {
      ++failures;
      progress.clear();
      std::fprintf(stderr, "vexo: %s\n", slot.complaint.c_str());
    }
    progress.one_done();
  };
  stages.make_slot = [] {
    const Frame none(layout_of(VEXO_FMT_YUV400), 1, 1, VEXO_STD_DEFAULT);
    return std::make_unique<Slot>(none, none);
  };
  run_stages(std::move(stages));
  if (failures > 0) throw Reported();
}

void run_thumbnail(Options &options) {
  if (options.size.empty() == options.fit.empty()) {
    throw CLI::RequiredError("one of --size and --fit");
  }
  if ((options.letterbox || options.fill) && options.fit.empty()) {
    throw Error("--letterbox and --fill are for --fit");
  }
  if (!options.folder.empty()) {
    make_many(options);
    return;
  }
  if (options.files.size() != 2) {
    throw Error("FILES are IN and OUT; more of them need --out-dir");
  }
  options.in = options.files[0];
  options.out = options.files[1];
  make_one(options);
}

}  // namespace

void add_thumbnail(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *const command = app.add_subcommand("thumbnail", kThumbnailHelp);
  command->add_option("FILES", options->files, "IN and OUT, or many IN")
      ->required();
  command->add_option("--out-dir", options->folder,
                      "Folder of the pictures of many files");
  add_file_options(command, "--from-size", options.get());
  add_step_options(command, options.get());
  command->add_option("--size", options->size,
                      "WxH of the thumbnail before it is turned");
  command->add_option("--fit", options->fit,
                      "WxH in which it fits, as wide to high as it is shown");
  CLI::Option *const letterbox = command->add_flag(
      "--letterbox", options->letterbox, "Black around it, up to --fit");
  command->add_flag("--fill", options->fill, "Cut to the shape of --fit")
      ->excludes(letterbox);
  command->add_option("--turn", options->turn,
                      "left, right, half, mirror, flip or the library's "
                      "codes 0 to 5");
  command->add_option("--prescale", options->prescale, "0, 2 or 4 (0)")
      ->check(CLI::IsMember({0, 2, 4}));
  command->callback([options] { run_thumbnail(*options); });
}

}  // namespace vexo
