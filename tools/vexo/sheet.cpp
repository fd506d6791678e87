// SPDX-License-Identifier: Apache-2.0
//
// vexo sheet: key frames of a video beside each other.
#include <algorithm>
#include <memory>
#include <optional>

#include "commands.h"
#include "error.h"
#include "lettering.h"
#include "progress.h"
#include "route.h"
#include "thumbnail.h"
#include "times.h"
#include "video.h"

namespace vexo {
namespace {

constexpr const char *kSheetHelp =
    R"(Makes a contact sheet: pictures of a video, evenly spaced in time.

The length is divided into as many parts as the grid has places; of each the key
frame at or before its middle is shown, scaled as vexo thumbnail does. OUT is
PNG, JPEG, WebP or PPM. --times draws when a picture is shown, which needs a
font.

  vexo sheet film.mp4 film.png
  vexo sheet film.mp4 film.jpg --grid 6x5 --cell 240x180 --times)";

struct SheetOptions : StreamOptions {
  std::string grid = "4x4";
  std::string cell = "320x240";
  std::string font;
  bool times = false;
};

constexpr int kGap = 4;
constexpr uint8_t kGround = 32;

// A frame of the video as rgb888, turned upright and scaled into a cell.
class Cells {
 public:
  Cells(const SheetOptions &options, VideoReader &video)
      : video_(video),
        source_(taken_info(options, video)),
        thumbnail_(cell_options(options)),
        route_(
            thumbnail_, Kind::kPpm, source_,
            [this] { return make_thumbnail(thumbnail_); }, Hdr::kMapped),
        frame_(frame_of(source_)),
        small_(frame_of(route_.result())) {}

  const Frame &small() const { return small_; }

  bool next() {
    if (!video_.read(frame_)) return false;
    route_.run(frame_, small_);
    return true;
  }

 private:
  static ThumbnailOptions cell_options(const SheetOptions &options) {
    ThumbnailOptions cell;
    static_cast<StreamOptions &>(cell) = options;
    cell.fit = options.cell;
    cell.to = "rgb888";
    return cell;
  }

  VideoReader &video_;
  StreamInfo source_;
  ThumbnailOptions thumbnail_;
  Route route_;
  Frame frame_;
  Frame small_;
};

void place(const Frame &small, const Frame &sheet, int x, int y) {
  for (int i = 0; i < small.height(); ++i) {
    std::copy_n(small.row(0, i), small.row_bytes(0),
                sheet.row(0, y + i) + ptrdiff_t{3} * x);
  }
}

void make_sheet(const SheetOptions &options) {
  const Kind kind = output_kind(options);
  if (!is_picture(kind)) {
    throw Error("a sheet is a PNG, JPEG, WebP or PPM");
  }
  int columns = 0;
  int rows = 0;
  parse_size(options.grid, "--grid", &columns, &rows);
  VideoWish wish = video_wish(options);
  wish.pick = true;
  const std::unique_ptr<VideoReader> video =
      read_video(std::make_unique<ByteSource>(options.in), wish);
  const double duration = video->duration();
  Cells cells(options, *video);
  const int width = cells.small().width();
  const int height = cells.small().height();
  std::optional<Lettering> lettering;
  if (options.times) {
    lettering.emplace(options.font, std::clamp(height / 10, 9, 48));
  }
  StreamInfo info;
  info.layout = &layout_of(VEXO_FMT_RGB888);
  const auto side = [](int count, int cell) {
    const int64_t all = int64_t{count} * (cell + kGap) + kGap;
    return static_cast<int>(std::min<int64_t>(all, kMaxSide + 1));
  };
  info.width = side(columns, width);
  info.height = side(rows, height);
  const Frame sheet = frame_of(info);
  std::fill_n(sheet.whole(), sheet.size(), kGround);
  const int count = columns * rows;
  Progress progress(options.quiet, count);
  for (int i = 0; i < count; ++i) {
    // Pictures, and what cannot be sought, go on from where they are.
    if (duration >= 1) video->seek_near(duration * (i + 0.5) / count);
    if (!cells.next()) {
      if (i == 0) throw Error(options.in + ": no frame is there");
      break;
    }
    const int x = kGap + i % columns * (width + kGap);
    const int y = kGap + i / columns * (height + kGap);
    place(cells.small(), sheet, x, y);
    if (lettering) {
      lettering->draw(time_text(video->time(), duration < 60 ? 1 : 0), sheet,
                      x + width, y + height);
    }
    progress.one_done();
  }
  write_picture(kind, options.out, info, sheet, options.encode);
}

}  // namespace

void add_sheet(CLI::App &app) {
  const auto options = std::make_shared<SheetOptions>();
  CLI::App *const command = add_stream_command(app, "sheet", kSheetHelp,
                                               "--from-size", options.get());
  add_step_options(command, options.get());
  command->add_option("--grid", options->grid, "Columns x rows (4x4)");
  command->add_option("--cell", options->cell,
                      "WxH into which each picture fits (320x240)");
  command->add_flag("--times", options->times, "Draws times");
  command->add_option("--font", options->font,
                      "Font file (DejaVu Sans or another that is there)");
  command->callback([options] { make_sheet(*options); });
}

}  // namespace vexo
