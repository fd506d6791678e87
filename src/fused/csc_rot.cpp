// SPDX-License-Identifier: Apache-2.0
//
// Conversion and a turn in one pass: blocks of the source are converted into a
// strip on the stack, and turned from there while they are in the near caches.
// Where all pixels have one rule planes are turned first, having fewer bytes.
#include "common/caches.h"
#include "csc/routes.h"
#include "csc/yuv_to_rgb_rows.h"
#include "fused/parts.h"
#include "orumlox/fused.h"
#include "rot/rot.h"
#include "rot/rotate_rows.h"

namespace lox {

namespace {

constexpr bool is_mirror(uint32_t rotation) {
  return rotation == VEXO_ROT_180 || rotation == VEXO_ROT_HORI;
}

// A picture of a size before its turn, and where blocks of it go.
class Turner {
 public:
  Turner(const vexo_img &dst, uint32_t rotation, int32_t width, int32_t height)
      : dst_(dst),
        rotation_(rotation),
        shape_(dst.format),
        width_(width),
        height_(height) {}

  const Shape &shape() const { return shape_; }

  // Turns a block whose first pixel is at (x, y).
  void put(const vexo_img &block, int32_t x, int32_t y) const {
    for (int p = 0; p < shape_.planes(); ++p) {
      uint8_t *const to = place(block, p, x, y);
      if (is_quarter(rotation_)) {
        const int unit = shape_.unit(p);
        const bool past = streams_columns(shape_.columns(p, width_),
                                          shape_.rows(p, height_), unit);
        turn_block(unit, rotation_, block.plane[p], block.width[p],
                   block.height[p], block.stride[p], dst_.stride[p], to, past);
      } else {
        kernel(p, rotation_)(block.plane[p], block.width[p], block.height[p],
                             block.stride[p], dst_.stride[p], to);
      }
    }
  }
  // Where a block of such a size goes that a quarter turn has turned.
  vexo_img target(int32_t columns, int32_t rows, int32_t x, int32_t y) const {
    vexo_img result = shape_.part(dst_, 0, 0, rows, columns);
    const vexo_img block = shape_.part(dst_, 0, 0, columns, rows);
    for (int p = 0; p < shape_.planes(); ++p) {
      result.plane[p] = place(block, p, x, y);
    }
    return result;
  }
  // Turns back what is where such a block will go.
  void get(const vexo_img &block, int32_t x, int32_t y) const {
    const bool quarter = is_quarter(rotation_);
    // One quarter turn is the other's inverse, all else its own.
    const uint32_t back =
        quarter ? VEXO_ROT_90L + VEXO_ROT_90R - rotation_ : rotation_;
    for (int p = 0; p < shape_.planes(); ++p) {
      kernel(p, back)(place(block, p, x, y),
                      quarter ? block.height[p] : block.width[p],
                      quarter ? block.width[p] : block.height[p],
                      dst_.stride[p], block.stride[p], block.plane[p]);
    }
  }

 private:
  vexo_rot_kernel *kernel(int p, uint32_t rotation) const {
    static constexpr vexo_rot_kernel *const *kKernels[] = {
        vexo_tbl_fn_rot_8b, vexo_tbl_fn_rot_16b, vexo_tbl_fn_rot_24b,
        vexo_tbl_fn_rot_32b};
    return kKernels[shape_.unit(p) - 1][rotation];
  }
  uint8_t *place(const vexo_img &block, int p, int32_t x, int32_t y) const {
    x = shape_.columns(p, x);
    y = shape_.rows(p, y);
    const int32_t right = shape_.columns(p, width_) - x - block.width[p];
    const int32_t below = shape_.rows(p, height_) - y - block.height[p];
    const int32_t to[6][2] = {{x, y},         {y, right}, {below, x},
                              {right, below}, {right, y}, {x, below}};
    const int unit = shape_.unit(p);
    // The copy of 16-bit units rounds strides down.
    const int32_t exact = rotation_ == VEXO_ROT_COPY && unit == 2 ? ~1 : ~0;
    return dst_.plane[p] +
           int64_t{to[rotation_][1]} * (dst_.stride[p] & exact) +
           int64_t{to[rotation_][0]} * unit;
  }

  const vexo_img &dst_;
  uint32_t rotation_;
  Shape shape_;
  int32_t width_, height_;
};

// Whether a conversion may leave samples of these sizes out.
bool is_partial(const Route &route, int32_t width, int32_t height) {
  return is_yuv(route.dst_format) && (width % 2 != 0 || height % 2 != 0);
}

void convert_block(const Route &route, const Turner &turner,
                   const vexo_img &src, const vexo_img &block, int32_t x,
                   int32_t y, bool partial) {
  if (partial) turner.get(block, x, y);
  route.convert(src, block);
  turner.put(block, x, y);
}

int32_t by_picture(const vexo_img &src, const Route &route,
                   const Turner &turner, int32_t width, int32_t height) {
  vexo_img middle;
  const int32_t status =
      vexo_picture_alloc(&middle, route.dst_format, width, height);
  if (status != VEXO_OK) return status;
  convert_block(route, turner, src, middle, 0, 0,
                is_partial(route, width, height));
  vexo_picture_free(&middle);
  return VEXO_OK;
}

// Columns of blocks with so many rows, where `left` are to be done: they fill
// the strip and are of nearly the same width.
int32_t columns_of(const Shape &shape, int32_t left, int32_t rows) {
  int32_t columns = left;
  for (int64_t blocks = shape.bytes(left, rows) / kStripBytes + 1;
       shape.bytes(columns, rows) > kStripBytes; ++blocks) {
    columns = static_cast<int32_t>((left - 1) / blocks / 64 * 64 + 64);
  }
  return columns;
}

// Fetches a block whose rows are too short for the processor to do so.
[[gnu::always_inline]] inline void fetch(const Shape &shape,
                                         const vexo_img &block) {
  for (int p = 0; p < shape.planes(); ++p) {
    for (ptrdiff_t y = 0; y < block.height[p]; ++y) {
      fetch_run(
          reinterpret_cast<uintptr_t>(block.plane[p] + y * block.stride[p]),
          ptrdiff_t{block.width[p]} * shape.unit(p));
    }
  }
}

// Sources are cut at the window's first pixel and have its size.
void by_blocks(const vexo_img &src, const Route &route, const Turner &turner,
               uint32_t rotation, int32_t width, int32_t height) {
  alignas(64) uint8_t bytes[kStripBytes];
  const Shape from(src.format);
  const Shape &to = turner.shape();
  const bool quarter = is_quarter(rotation);
  const bool fetches =
      kFetchesRows && quarter &&
      static_cast<uint64_t>(width) * static_cast<uint64_t>(height) >=
          memory_now().far_from;
  // Of a quarter turn a cache line of each destination row, or some. From
  // memory wide blocks come better than high ones: then two lines, where the
  // registers do not hold a line each.
  const bool wide =
      fetches && to.unit(0) == 4 && yuv_to_rgb_rows().stream_alignment < 64;
  const int32_t rows = !quarter ? 8 : wide ? 32 : 64;
  const bool first_alone = has_first_row_alone(route, width, height);
  const bool partial = is_partial(route, width, height);
  for (int32_t x = 0; x < width;) {
    const int32_t columns = columns_of(to, width - x, rows);
    const vexo_img strip = to.strip(bytes, columns, rows);
    for (Parts part(height, rows, first_alone, rotation == VEXO_ROT_90R);
         part.more();) {
      const int32_t y = part.y();
      const vexo_img block = from.part(src, x, y, columns, part.rows());
      const vexo_img made = to.part(strip, 0, 0, columns, part.rows());
      part.next();
      if (fetches && part.more()) {
        fetch(from, from.part(src, x, part.y(), columns, part.rows()));
      }
      convert_block(route, turner, block, made, x, y, partial);
    }
    x += columns;
  }
}

// Whether the planes of a quarter turn are turned before they become pixels,
// which have more bytes: where every pixel comes out the same so, no row or
// column of it following another rule. Measured: beyond the near caches
// registers of whole lines turn pixels faster.
bool turns_planes(const vexo_img &src, const vexo_img &dst, bool far) {
  const int32_t format = src.format;
  return rgb_bytes(dst.format) > 2 && has_half_rows(format) &&
         has_half_columns(format) && !is_10_bit(format) &&
         src.width[0] % 8 == 0 && src.height[0] % 8 == 0 &&
         (!far || yuv_to_rgb_rows().stream_alignment < 64);
}

// Runs of the destination's rows are converted in their places, from a few
// columns of planes.
void by_turned_planes(const vexo_img &src, const Route &route,
                      const Turner &turner, uint32_t rotation, bool far) {
  alignas(64) uint8_t bytes[kStripBytes];
  const Shape from(src.format);
  const int32_t width = src.width[0];
  const int32_t height = src.height[0];
  constexpr int32_t kColumns = 64;
  const auto block_at = [&](int32_t x, int32_t y) {
    const int32_t columns = width - x < kColumns ? width - x : kColumns;
    return from.part(src, x, y, columns,
                     columns_of(from, height - y, kColumns));
  };
  for (int32_t x = 0, y = 0; x < width;) {
    const vexo_img block = block_at(x, y);
    const int32_t columns = block.width[0];
    const int32_t rows = block.height[0];
    const vexo_img strip = from.strip(bytes, rows, columns);
    const vexo_img turned = from.part(strip, 0, 0, rows, columns);
    for (int p = 0; p < from.planes(); ++p) {
      turn_block(from.unit(p), rotation, block.plane[p], block.width[p],
                 block.height[p], block.stride[p], turned.stride[p],
                 turned.plane[p], false);
    }
    const vexo_img to = turner.target(columns, rows, x, y);
    y += rows;
    if (y == height) {
      y = 0;
      x += columns;
    }
    if (kFetchesRows && far && x < width) fetch(from, block_at(x, y));
    route.convert(turned, to, kAllRows, int64_t{width} * height);
  }
}

// Rows of RGB that need no block are converted to their places at once, which
// are written past the caches where vexo_csc would. What is mirrored is so
// before the conversion, having fewer bytes then.
class Straight {
 public:
  Straight(const vexo_img &src, const Route &route, uint32_t rotation,
           const vexo_img &dst)
      : src_(src),
        route_(route),
        mirrors_(is_mirror(rotation)),
        from_(src.format),
        to_(dst.format),
        dst_(dst) {
    if (rotation == VEXO_ROT_VERT || rotation == VEXO_ROT_180) {
      dst_.plane[0] += int64_t{dst.stride[0]} * (src.height[0] - 1);
      dst_.stride[0] = -dst.stride[0];
    } else if (rotation == VEXO_ROT_COPY && rgb_bytes(dst.format) == 2) {
      dst_.stride[0] &= ~1;  // as the copy of 16-bit units does
    }
  }

  // Whether every pixel comes out as it does without the turn: none beyond an
  // odd width, none by another rule at the end of a row or of another half of
  // its pair.
  bool serves() const {
    if (!is_rgb(dst_.format)) return false;
    const int32_t width = src_.width[0];
    if (!mirrors_) return width % 2 == 0 || !in_whole_pairs(route_);
    return width % 8 == 0 && src_.format / 100 != 1 &&
           from_.bytes(width, kFewRows) <= kStripBytes;
  }
  void convert() const {
    if (!mirrors_) return route_.convert(src_, dst_);
    alignas(64) uint8_t bytes[kStripBytes];
    const int32_t width = src_.width[0];
    const int32_t height = src_.height[0];
    // Calls for few rows cost more, and so do rows that leave the first cache.
    constexpr int32_t kManyRows = 16;
    constexpr int64_t kNearest = int64_t{24} << 10;
    const int32_t rows =
        from_.bytes(width, kManyRows) <= kNearest ? kManyRows : kFewRows;
    const vexo_img strip = from_.strip(bytes, width, rows);
    for (Parts part(height, rows, false, false); part.more(); part.next()) {
      const vexo_img some = from_.part(src_, 0, part.y(), width, part.rows());
      const vexo_img mirrored = from_.part(strip, 0, 0, width, part.rows());
      for (int p = 0; p < from_.planes(); ++p) {
        const auto reverse = rotate_rows().reverse[from_.unit(p) - 1];
        for (ptrdiff_t y = 0; y < some.height[p]; ++y) {
          reverse(some.plane[p] + y * some.stride[p],
                  mirrored.plane[p] + y * mirrored.stride[p], some.width[p]);
        }
      }
      route_.convert(mirrored, to_.part(dst_, 0, part.y(), width, part.rows()),
                     kAllRows, int64_t{width} * height);
    }
  }

 private:
  static constexpr int32_t kFewRows = 4;

  const vexo_img &src_;
  const Route &route_;
  bool mirrors_;
  Shape from_, to_;
  vexo_img dst_;
};

int32_t convert_and_turn(const vexo_img &src, uint32_t rotation,
                         const vexo_img &dst) {
  const bool quarter = is_quarter(rotation);
  const int32_t width = (quarter ? dst.height : dst.width)[0];
  const int32_t height = (quarter ? dst.width : dst.height)[0];
  vexo_img from = src;
  vexo_img to = dst;
  from.width[0] = to.width[0] = width;
  from.height[0] = to.height[0] = height;
  const Found found = find_route(from, to);
  if (found.status != VEXO_OK) return found.status;
  if (rotation > VEXO_ROT_VERT || turned_unit(dst.format) == 0) {
    return VEXO_ERR_UNSUPPORTED;
  }
  const bool tiled = is_tiled(src.format);
  const Shape shape(src.format);
  int32_t x = 0;
  int32_t y = 0;
  if (width != src.width[0] || height != src.height[0]) {
    x = src.offset_x;
    y = src.offset_y;
    if (x < 0 || y < 0 || width > src.width[0] || x > src.width[0] - width ||
        height > src.height[0] || y > src.height[0] - height) {
      return VEXO_ERR_ARG;
    }
    if (tiled || !shape.cuts(x, y)) return VEXO_ERR_UNSUPPORTED;
  }
  if (found.route == nullptr) return VEXO_OK;
  const Turner turner(dst, rotation, width, height);
  if (tiled) return by_picture(src, *found.route, turner, width, height);
  const vexo_img window = shape.part(src, x, y, width, height);
  // Where rows of a plane do not lie as its stride says.
  Driver *const driver = found.route->driver;
  if ((driver == exchange_planes && src.stride[1] != src.stride[2]) ||
      (driver == exchange_pairs && src.stride[1] % 2 != 0)) {
    return by_picture(window, *found.route, turner, width, height);
  }
  const uint64_t pixels =
      static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
  const bool far =
      pixels * static_cast<uint64_t>(rgb_bytes(dst.format)) + pixels * 3 / 2 >=
      memory_now().far_from;
  const Straight straight(window, *found.route, rotation, dst);
  if (!quarter && straight.serves()) {
    straight.convert();
  } else if (quarter && turns_planes(window, dst, far)) {
    by_turned_planes(window, *found.route, turner, rotation, far);
  } else {
    by_blocks(window, *found.route, turner, rotation, width, height);
  }
  return VEXO_OK;
}

}  // namespace

}  // namespace lox

extern "C" {

int32_t vexo_csc_rot(const vexo_img *src, uint32_t rotation,
                     const vexo_img *dst) {
  return lox::convert_and_turn(*src, rotation, *dst);
}

}  // extern "C"
