// SPDX-License-Identifier: Apache-2.0
//
// Camera frames: checks, and where the rows that are converted go. For a
// quarter turn parts of the planes or of their pixels are transposed, for a
// mirror rows are reversed; nothing else passes through memory of its own.
#include "orumlox/camera.h"

#include <cstddef>
#include <cstdint>

#include "camera/rows.h"
#include "common/copy_rows.h"
#include "common/strip.h"
#include "rot/rotate_rows.h"

namespace lox {

namespace {

// What a rotation and a mirror come to: rows become columns, the destination's
// rows go up, its columns go backwards.
struct Turn {
  bool quarter, up, back;
};

Turn turn_of(const vexo_camera_options &options) {
  const int32_t degrees = options.rotation;
  return {degrees % 180 != 0, degrees >= 180,
          (degrees == 90 || degrees == 180) != (options.mirror != 0)};
}

// The options with the crop's size filled in.
vexo_camera_options whole(const vexo_camera_frame &frame,
                          const vexo_camera_options *given) {
  vexo_camera_options options = {};
  if (given != nullptr) options = *given;
  if (options.crop_width == 0) {
    options.crop_width = frame.width - options.crop_x;
  }
  if (options.crop_height == 0) {
    options.crop_height = frame.height - options.crop_y;
  }
  return options;
}

template <size_t kCount>
bool all_zero(const int32_t (&words)[kCount]) {
  for (const int32_t word : words) {
    if (word != 0) return false;
  }
  return true;
}

bool is_within(int32_t origin, int32_t size, int32_t whole) {
  return origin >= 0 && size >= 1 && size <= whole && origin <= whole - size;
}

// Whether strides hold the plane's rows and its bytes the crop's last sample.
bool has_samples(const vexo_camera_frame &frame, const vexo_camera_options &o,
                 int p) {
  const int shift = p == 0 ? 0 : 1;
  const int64_t pixel = frame.pixel_stride[p];
  const int64_t row = frame.row_stride[p];
  const int64_t last_in_row = (frame.width - 1) >> shift;
  const int64_t x = (o.crop_x + o.crop_width - 1) >> shift;
  const int64_t y = (o.crop_y + o.crop_height - 1) >> shift;
  return (pixel == 1 || pixel == 2) && row > last_in_row * pixel &&
         static_cast<uint64_t>(y * row + x * pixel) < frame.bytes[p];
}

bool fits(const vexo_camera_options &o, const vexo_img &dst, int32_t unit) {
  const bool quarter = turn_of(o).quarter;
  const int32_t width = quarter ? o.crop_height : o.crop_width;
  const int32_t height = quarter ? o.crop_width : o.crop_height;
  const int64_t stride = dst.stride[0];
  return dst.width[0] == width && dst.height[0] == height &&
         (stride < 0 ? -stride : stride) >= int64_t{width} * unit;
}

int32_t check(const vexo_camera_frame *frame,
              const vexo_camera_options *options, const vexo_img *dst) {
  if (frame == nullptr || dst == nullptr || dst->plane[0] == nullptr) {
    return VEXO_ERR_ARG;
  }
  for (const uint8_t *const plane : frame->plane) {
    if (plane == nullptr) return VEXO_ERR_ARG;
  }
  if (!CameraRows::converts(frame->color_std, dst->format) ||
      (dst->color_std != 0 && dst->color_std != frame->color_std)) {
    return VEXO_ERR_UNSUPPORTED;
  }
  if (frame->width < 1 || frame->height < 1 || !all_zero(frame->reserved)) {
    return VEXO_ERR_ARG;
  }
  if (options != nullptr) {
    const int32_t degrees = options->rotation;
    if ((degrees != 0 && degrees != 90 && degrees != 180 && degrees != 270) ||
        (options->mirror != 0 && options->mirror != 1) || options->crop_x < 0 ||
        options->crop_y < 0 || !all_zero(options->reserved)) {
      return VEXO_ERR_ARG;
    }
  }
  const vexo_camera_options o = whole(*frame, options);
  if (!is_within(o.crop_x, o.crop_width, frame->width) ||
      !is_within(o.crop_y, o.crop_height, frame->height) ||
      !has_samples(*frame, o, 0) || !has_samples(*frame, o, 1) ||
      !has_samples(*frame, o, 2)) {
    return VEXO_ERR_ARG;
  }
  return fits(o, *dst, CameraRows::unit_of(dst->format)) ? VEXO_OK
                                                         : VEXO_ERR_ARG;
}

// One call. Columns and rows count from the crop's corner, which lies `skip_x_`
// and `skip_y_` behind the even pixel that rows are made from.
class Job {
 public:
  Job(const vexo_camera_frame &frame, const vexo_camera_options &o,
      const vexo_img &dst)
      : rows_(frame, o.crop_x & ~1, o.crop_y & ~1,
              (o.crop_y & 1) + o.crop_height, dst.format),
        turn_(turn_of(o)),
        // Columns with a rule of their own would become rows, and rows columns.
        turns_planes_(rows_.any_width() &&
                      (frame.color_std != VEXO_STD_BT601_FULL ||
                       (o.crop_width % 8 == 0 && o.crop_height % 8 == 0 &&
                        o.crop_x % 2 == 0 && o.crop_y % 2 == 0))),
        skip_x_(o.crop_x & 1),
        skip_y_(o.crop_y & 1),
        width_(o.crop_width),
        height_(o.crop_height),
        unit_(CameraRows::unit_of(dst.format)),
        step_(static_cast<ptrdiff_t>(turn_.up ? -int64_t{dst.stride[0]}
                                              : dst.stride[0])),
        dst_(dst.plane[0] +
             (turn_.up ? ptrdiff_t{dst.height[0] - 1} * dst.stride[0] : 0)) {}

  void run() const {
    if (turn_.quarter && turns_planes_ && !is_far()) {
      turn_planes();
    } else if (turn_.quarter) {
      transpose();
    } else if (turn_.back) {
      reverse();
    } else {
      upright();
    }
  }

 private:
  // Rows of a strip of columns between two steps.
  struct Lines {
    static constexpr int32_t kColumns = CameraRows::kColumns;
    static StripSize next(int32_t left) {
      return Strip<4 * kColumns>::next(left, 4, 1);
    }
    alignas(64) uint8_t bytes[2 * 4 * kColumns];
  };

  // Calls work(x, columns, skip) for strips of columns as wide as next(left)
  // says, x counting from the even column; the first `skip` are not wanted.
  template <class Next, class Work>
  void for_strips(Next next, Work work) const {
    const int32_t end = skip_x_ + width_;
    for (int32_t x = 0; x < end;) {
      const int32_t columns = next(end - x);
      work(x, columns, x == 0 ? skip_x_ : 0);
      x += columns;
    }
  }
  // `count` rows from y on, of a strip of columns.
  void make(int32_t y, int32_t count, int32_t x, int32_t columns,
            const CameraRows::Target &to) const {
    rows_.make({skip_y_ + y, skip_y_ + y + count}, x, columns, to);
  }
  // Makes two rows of a strip at a time: calls take(row, y).
  template <class Take>
  void by_lines(int32_t x, int32_t columns, Lines *lines, Take take) const {
    const ptrdiff_t pitch = ptrdiff_t{columns} * unit_;
    for (int32_t y = 0; y < height_;) {
      const bool pair = (y + skip_y_) % 2 == 0 && y + 1 < height_;
      const int32_t end = y + (pair ? 2 : 1);
      make(y, end - y, x, columns, {lines->bytes, pitch, {}, false});
      const uint8_t *row = lines->bytes;
      for (; y < end; ++y, row += pitch) take(row, y);
    }
  }

  // A pixel that nobody wants is in the way of the first columns alone.
  void upright() const {
    const auto next = [&](int32_t left) {
      const bool skips = skip_x_ != 0 && left == skip_x_ + width_;
      if (skips) return left < 64 ? left : 64;
      return rows_.any_width() ? left : Lines::next(left).columns;
    };
    for_strips(next, [&](int32_t x, int32_t columns, ptrdiff_t skip) {
      uint8_t *const to = dst_ + (x + skip - skip_x_) * unit_;
      if (skip == 0) {
        const Writing writing = rows_.writing(to, step_, columns, height_);
        make(0, height_, x, columns, {to, step_, writing, false});
        if (writing.stream) yuv_to_rgb_rows().end_stream();
        return;
      }
      Lines lines;
      by_lines(x, columns, &lines, [&](const uint8_t *row, int32_t y) {
        copy_rows().copy(
            to + y * step_, row + unit_,
            static_cast<size_t>(columns - 1) * static_cast<size_t>(unit_));
      });
    });
  }

  void reverse() const {
    Lines lines;
    const auto reverse_row = rotate_rows().reverse[unit_ - 1];
    for_strips(
        [](int32_t left) { return Lines::next(left).columns; },
        [&](int32_t x, int32_t columns, ptrdiff_t skip) {
          uint8_t *const to =
              dst_ + ptrdiff_t{width_ + skip_x_ - x - columns} * unit_;
          by_lines(x, columns, &lines, [&](const uint8_t *row, int32_t y) {
            reverse_row(row + skip * unit_, to + y * step_, columns - skip);
          });
        });
  }

  uint64_t pixels() const {
    return static_cast<uint64_t>(width_) * static_cast<uint64_t>(height_);
  }
  // Whether the frame and its pixels are more than the near caches have.
  bool is_far() const {
    return pixels() * static_cast<uint64_t>(unit_) + pixels() * 3 / 2 >=
           memory_now().far_from;
  }

  // Planes are turned before they become pixels, of which they have a third of
  // the bytes.
  void turn_planes() const {
    alignas(64) uint8_t planes[kStripBytes];
    for (int32_t x = 0, columns = 0; x < width_; x += columns) {
      // A pixel that is half of a pair is alone, here and in run().
      const int32_t most =
          x == 0 && skip_x_ != 0 ? 1 : CameraRows::kTurnedColumns;
      columns = width_ - x < most ? width_ - x : most;
      for (int32_t y = 0, count = 0; y < height_; y += count) {
        count = run(y);
        const CameraRows rows = rows_.turned(skip_x_ + x, skip_y_ + y, columns,
                                             count, turn_.back, planes);
        const ptrdiff_t at = turn_.back ? height_ - y - count : y;
        uint8_t *const to = dst_ + x * step_ + at * unit_;
        rows.make({0, columns}, 0, count, {to, step_, {}, false});
      }
    }
  }
  // How many rows from y on become runs of the destination's rows, of nearly
  // the same length.
  int32_t run(int32_t y) const {
    const int32_t left = height_ - y;
    if ((y == 0 && skip_y_ != 0) || left == 1) return 1;
    // Backwards the last one would be the first of its run.
    const int32_t whole = turn_.back ? left & ~1 : left;
    const int32_t runs = (whole - 1) / CameraRows::kMostTurned + 1;
    return runs == 1 ? whole : ((whole - 1) / runs / 64 + 1) * 64;
  }

  // Pixels are made and turned: those that are far, because rows are read in
  // longer runs so, and those that must be made as the frame lies. A cache line
  // of each destination row at once, or several.
  void transpose() const {
    constexpr int32_t kRows = 64;
    alignas(64) uint8_t strip[kStripBytes];
    const RotateRows &kernels = rotate_rows();
    const bool stream = streams_columns(width_, height_, unit_);
    const bool far = is_far();
    const auto transpose_rows =
        (stream ? kernels.transpose_past : kernels.transpose)[unit_ - 1];
    for_strips(
        [&](int32_t left) { return Strip<>::next(left, unit_, kRows).columns; },
        [&](int32_t x, int32_t columns, ptrdiff_t skip) {
          const ptrdiff_t pitch = ptrdiff_t{columns} * unit_;
          uint8_t *const to = dst_ + (x + skip - skip_x_) * step_;
          const uint8_t *const from = strip + skip * unit_;
          for (int32_t y = 0, count = 0; y < height_; y += count) {
            count = rows_at_once(height_ - y, y, kRows);
            make(y, count, x, columns, {strip, pitch, {}, far});
            const ptrdiff_t at = turn_.back ? height_ - y - count : y;
            transpose_rows(turn_.back ? from + (count - 1) * pitch : from,
                           turn_.back ? -pitch : pitch, to + at * unit_, step_,
                           columns - skip, count);
          }
        });
  }

  // `most`, and a part of what is over where the destination's rows end, so
  // that the others begin with a line there. Few rows, which do not fill a
  // vector, go with half of the others before them.
  int32_t rows_at_once(int32_t left, int32_t y, int32_t most) const {
    const int32_t over = left % most;
    const bool here = turn_.back ? y == 0 && over != 0 : left < 2 * most;
    if (!here || left <= most) return left < most ? left : most;
    if (over >= most / 2) return turn_.back ? over : most;
    return turn_.back ? most / 2 + over : most / 2;
  }

  CameraRows rows_;
  Turn turn_;
  bool turns_planes_;
  int32_t skip_x_, skip_y_, width_, height_;
  int32_t unit_;
  // Where the row goes that is first after the turn, and the next from there.
  ptrdiff_t step_;
  uint8_t *dst_;
};

}  // namespace

}  // namespace lox

extern "C" {

int32_t vexo_camera_to_rgb(const vexo_camera_frame *frame,
                           const vexo_camera_options *options,
                           const vexo_img *dst) {
  const int32_t status = lox::check(frame, options, dst);
  if (status != VEXO_OK) return status;
  lox::Job(*frame, lox::whole(*frame, options), *dst).run();
  return VEXO_OK;
}

}  // extern "C"
