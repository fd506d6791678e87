// SPDX-License-Identifier: Apache-2.0
//
// Where each stage's picture lies, copies for what the caller's pictures have
// no room for, and the calls themselves.
#include "picture/pipeline.h"

#include <cstring>

#include "common/caches.h"
#include "orumlox/apex.h"
#include "orumlox/csc_new.h"
#include "orumlox/deep.h"
#include "orumlox/rot.h"
#include "orumlox/rsz.h"
#include "picture/formats.h"
#include "picture/tones.h"

namespace lox {

namespace {

constexpr int32_t kAlignment = 64;
constexpr int32_t even(int32_t n) { return n + n % 2; }

// The fields that count, with the sizes that follow from plane 0's.
vexo_img normalised(const vexo_img &img) {
  vexo_img result = {};
  result.format = img.format;
  const Format &format = *find_format(img.format);
  set_sizes(&result, img.width[0], img.height[0]);
  for (int32_t p = 0; p < format.planes; ++p) {
    const PlaneRule &rule = format.plane[p];
    result.plane[p] = img.plane[p];
    result.stride[p] =
        is_tiled(img.format)
            ? static_cast<int32_t>(least_stride(rule, img.width[0]))
            : img.stride[p];
    result.buf_height[p] =
        static_cast<int32_t>(least_rows(rule, img.height[0]));
  }
  return result;
}

// Luma beyond an odd picture, which tiles are to hold, becomes 0.
void clear_edge(const vexo_img &img) {
  const int32_t width = img.width[0];
  const int32_t height = img.height[0];
  const ptrdiff_t stride = img.stride[0];
  if (width % 2 != 0) {
    for (ptrdiff_t y = 0; y < height; ++y) {
      img.plane[0][y * stride + width] = 0;
    }
  }
  if (height % 2 == 0) return;
  memset(img.plane[0] + height * stride, 0, static_cast<size_t>(even(width)));
}

// The same memory as a picture of the next even size.
vexo_img even_view(const vexo_img &img) {
  vexo_img result = img;
  set_sizes(&result, even(img.width[0]), even(img.height[0]));
  return result;
}

bool is_dense(Work work) {
  return work == Work::kWords || work == Work::kToneMap;
}

// Rows of a picture as one of its own. Of subsampled ones the first is even.
vexo_img rows_of(const vexo_img &img, int32_t first, int32_t rows) {
  vexo_img result = img;
  const Format &format = *find_format(img.format);
  set_sizes(&result, img.width[0], rows);
  for (int32_t p = 0; p < format.planes; ++p) {
    result.plane[p] +=
        ptrdiff_t{first >> format.plane[p].y_shift} * img.stride[p];
  }
  return result;
}

// A picture of a stage without its memory: room for the next even size.
int32_t describe(const Stage &stage, int32_t rows, vexo_img *img) {
  const int32_t status =
      vexo_picture_geometry(img, stage.content.format, even(stage.width),
                            even(rows), is_dense(stage.work) ? 1 : kAlignment);
  if (status == VEXO_OK) set_sizes(img, stage.width, rows);
  return status;
}

int32_t bytes_of(const Stage &stage, int32_t rows, size_t *bytes) {
  return vexo_picture_bytes(stage.content.format, even(stage.width), even(rows),
                            kAlignment, bytes);
}

// Whether P010LE is reduced by whole factors, which vexo_rsz does.
bool is_whole(const vexo_img &src, const vexo_img &dst) {
  const auto whole = [](int64_t from, int64_t to) {
    return to < from && from % to == 0;
  };
  for (int p = 0; p < 2; ++p) {
    if (!whole(src.width[p], dst.width[p]) ||
        !whole(src.height[p], dst.height[p])) {
      return false;
    }
  }
  return src.format == VEXO_FMT_P010LE;
}

int32_t scale(const vexo_img &src, const vexo_img &dst, int32_t filter) {
  if (filter == VEXO_FILTER_LANCZOS) return vexo_rsz_apex_c(&src, &dst);
  return is_10_bit(src.format) && !is_whole(src, dst)
             ? vexo_rsz_deep(&src, &dst)
             : vexo_rsz(&src, &dst);
}

int32_t turn(const vexo_img &src, int32_t rotation, const vexo_img &dst) {
  const auto code = static_cast<uint32_t>(rotation);
  if (!is_10_bit(src.format) && src.format != VEXO_FMT_RGBA1010102) {
    return vexo_rot(&src, code, &dst);
  }
  const Format &format = *find_format(src.format);
  for (int32_t p = 0; p < format.planes; ++p) {
    (format.plane[p].unit == 2 ? vexo_tbl_fn_rot_16b
                               : vexo_tbl_fn_rot_32b)[code](
        src.plane[p], src.width[p], src.height[p], src.stride[p], dst.stride[p],
        dst.plane[p]);
  }
  return VEXO_OK;
}

// A call that has been checked fails for want of memory alone.
int32_t memory_status(int32_t status) {
  return status == VEXO_ERR_ARG ? VEXO_ERR_MEMORY : status;
}

}  // namespace

Pipeline::Pipeline(const vexo_img &src, const vexo_img &dst,
                   const vexo_picture_options &options, const Plan &plan)
    : src_(normalised(src)),
      dst_(normalised(dst)),
      options_(options),
      from_(content_of(src.format, src.color_std)),
      plan_(plan) {
  complete();
}

Content Pipeline::content_before(int i) const {
  return i == 0 ? from_ : plan_.stage[i - 1].content;
}

// Whether a stage can read the caller's source.
bool Pipeline::reads_source() const {
  const Stage &stage = plan_.stage[0];
  switch (stage.work) {
    case Work::kConvert:
      return is_tiled(src_.format) ||
             !wants_even(stage.conversion, from_, stage.width, stage.height);
    case Work::kThumbnail:
      return src_.stride[0] > 0 &&
             (src_.format != VEXO_FMT_NV12 || src_.stride[1] > 0);
    case Work::kToneMap:
      // A width that is odd is read one sample further; plane 1's stride serves
      // plane 2; luma is measured in rows without gaps and of 10 bits.
      return src_.width[0] % 2 == 0 && options_.measure == 0 &&
             (src_.format == VEXO_FMT_P010LE ||
              src_.stride[1] == src_.stride[2]);
    default:
      return true;
  }
}

// Whether the last stage can write the caller's destination.
bool Pipeline::writes_destination() const {
  const Stage &stage = plan_.stage[plan_.count - 1];
  switch (stage.work) {
    case Work::kConvert:
      return is_tiled(dst_.format) ||
             !wants_even(stage.conversion, content_before(plan_.count - 1),
                         stage.width, stage.height);
    case Work::kThumbnail:
      return false;  // whole blocks are written
    case Work::kToneMap: {
      vexo_img dense;
      if (stage.width % 2 != 0 ||
          describe(stage, stage.height, &dense) != VEXO_OK) {
        return false;
      }
      for (int p = 0; p < 3; ++p) {
        if (dense.stride[p] != dst_.stride[p]) return false;
      }
      return true;
    }
    default:
      return true;
  }
}

// Adds copies to and from pictures with room.
void Pipeline::complete() {
  Stage *const stages = plan_.stage;
  if (plan_.count == 0) {
    plan_.add(Work::kCopy, from_, src_.width[0], src_.height[0]);
  }
  if (!reads_source()) {
    for (int i = plan_.count++; i > 0; --i) stages[i] = stages[i - 1];
    const bool words = stages[0].work == Work::kToneMap;
    stages[0] = {
        words ? Work::kWords : Work::kCopy,
        {},
        words ? content_of(VEXO_FMT_YUV420PLANAR16, from_.standard) : from_,
        src_.width[0],
        src_.height[0]};
  }
  if (!writes_destination()) {
    plan_.add(Work::kCopy, stages[plan_.count - 1].content, dst_.width[0],
              dst_.height[0]);
  }
}

// Most conversions look at no row but their own, and at the other one that has
// the same chroma: a few rows of all stages are done while they are near. What
// is interpolated looks further, and tiles are left whole.
int32_t Pipeline::rows_of_bands() const {
  constexpr int32_t kLeast = 8;  // patterns are as high
  const int32_t height = src_.height[0];
  size_t most = 0;
  for (int i = 0; i < plan_.count; ++i) {
    const Stage &stage = plan_.stage[i];
    const bool by_rows =
        stage.work == Work::kCopy ||
        (stage.work == Work::kConvert && !stage.conversion.interpolates());
    if (!by_rows || is_tiled(content_before(i).format) ||
        is_tiled(stage.content.format)) {
      return height;
    }
    size_t bytes = 0;
    if (i < plan_.count - 1 && bytes_of(stage, kLeast, &bytes) == VEXO_OK &&
        bytes > most) {
      most = bytes;
    }
  }
  if (most == 0) return height;
  const size_t bands = kStripBytes / most;
  const int64_t rows = kLeast * static_cast<int64_t>(bands > 0 ? bands : 1);
  return rows < height ? static_cast<int32_t>(rows) : height;
}

vexo_img Pipeline::output(const vexo_picture_context &context, int i,
                          const Band &band) const {
  const Stage &stage = plan_.stage[i];
  const bool all = band.rows == src_.height[0];
  if (i == plan_.count - 1) {
    return all ? dst_ : rows_of(dst_, band.first, band.rows);
  }
  vexo_img img;
  describe(stage, all ? stage.height : band.rows, &img);
  place_planes(&img, context.scratch[i % 2].data());
  return img;
}

int32_t Pipeline::prepare(vexo_picture_context *context, int32_t rows) const {
  const bool all = rows == src_.height[0];
  for (int i = 0; i < plan_.count - 1; ++i) {
    const Stage &stage = plan_.stage[i];
    const int32_t own_rows = all ? stage.height : rows;
    size_t bytes = 0;
    vexo_img img;
    // What has no geometry has no memory either.
    if (describe(stage, own_rows, &img) != VEXO_OK ||
        bytes_of(stage, own_rows, &bytes) != VEXO_OK ||
        !context->scratch[i % 2].reserve(bytes)) {
      return VEXO_ERR_MEMORY;
    }
  }
  for (int i = 0; i < plan_.count; ++i) {
    const Stage &stage = plan_.stage[i];
    if (stage.work != Work::kThumbnail) continue;
    const Band band = {0, rows};
    const vexo_img in = i == 0 ? src_ : output(*context, i - 1, band);
    const int32_t prescale =
        stage.content.format == VEXO_FMT_NV12 ? options_.prescale : 0;
    const int32_t status =
        context->thumbnail.make(in, output(*context, i, band), prescale);
    if (status != VEXO_OK) return status;
  }
  return VEXO_OK;
}

int32_t Pipeline::run(vexo_picture_context *context) {
  const int32_t rows = rows_of_bands();
  const int32_t height = src_.height[0];
  int32_t status = prepare(context, rows);
  for (int32_t y = 0; y < height && status == VEXO_OK; y += rows) {
    status = work(context, {y, height - y < rows ? height - y : rows});
    if (height - y <= rows) break;
  }
  return status;
}

int32_t Pipeline::work(vexo_picture_context *context, const Band &band) const {
  vexo_img in =
      band.rows == src_.height[0] ? src_ : rows_of(src_, band.first, band.rows);
  int32_t status = VEXO_OK;
  for (int i = 0; i < plan_.count && status == VEXO_OK; ++i) {
    const vexo_img out = output(*context, i, band);
    status = work(context, i, in, out);
    in = out;
  }
  return status;
}

int32_t Pipeline::work(vexo_picture_context *context, int i, vexo_img in,
                       vexo_img out) const {
  const Stage &stage = plan_.stage[i];
  const auto rotation = static_cast<uint32_t>(options_.rotation);
  switch (stage.work) {
    case Work::kCopy:
      copy_step(in, out);
      return VEXO_OK;
    case Work::kConvert:
      if (stage.conversion.is_new()) {
        in.color_std = content_before(i).standard;
        in.reserved1 =
            stage.conversion.interpolates() ? stage.conversion.siting : 0;
        return vexo_csc_new(&in, &out);
      }
      if (stage.conversion.step != nullptr) {
        stage.conversion.step(in, out);
        return VEXO_OK;
      }
      if (wants_even(stage.conversion, content_before(i), in.width[0],
                     in.height[0])) {
        if (is_tiled(out.format)) clear_edge(in);
        in = even_view(in);
        out = even_view(out);
      }
      stage.conversion.route->convert(in, out);
      return VEXO_OK;
    case Work::kScale:
      out.mode = options_.mode;
      return memory_status(scale(in, out, options_.filter));
    case Work::kScaleAndTurn:
      out.mode = options_.mode;
      // The codes are compared, also where turned planes are another format's.
      out.format = in.format;
      return memory_status(vexo_rsz_rot(&in, rotation, &out));
    case Work::kTurn:
      return turn(in, options_.rotation, out);
    case Work::kThumbnail:
      context->thumbnail.run(in, out);
      return VEXO_OK;
    case Work::kWords:
      take_words(in, out);
      return VEXO_OK;
    case Work::kToneMap:
      return memory_status(tone_map(in, options_, out));
  }
  return VEXO_ERR_UNSUPPORTED;
}

}  // namespace lox
