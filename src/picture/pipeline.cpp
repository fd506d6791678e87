// SPDX-License-Identifier: Apache-2.0
//
// Runs stages: where each one's picture lies, copies for what the caller's
// pictures have no room for, and the calls themselves.
#include "picture/pipeline.h"

#include <cstring>

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

// A picture of a stage without its memory: room for the next even size.
int32_t describe(const Stage &stage, vexo_img *img) {
  const int32_t status = vexo_picture_geometry(
      img, stage.content.format, even(stage.width), even(stage.height),
      is_dense(stage.work) ? 1 : kAlignment);
  if (status == VEXO_OK) set_sizes(img, stage.width, stage.height);
  return status;
}

int32_t bytes_of(const Stage &stage, size_t *bytes) {
  return vexo_picture_bytes(stage.content.format, even(stage.width),
                            even(stage.height), kAlignment, bytes);
}

int32_t turn(const vexo_img &src, int32_t rotation, const vexo_img &dst) {
  const auto code = static_cast<uint32_t>(rotation);
  if (!is_10_bit(src.format)) return vexo_rot(&src, code, &dst);
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
                   const vexo_picture_options &options)
    : src_(normalised(src)),
      dst_(normalised(dst)),
      options_(options),
      from_(content_of(src.format, src.color_std)),
      width_(src.width[0]),
      height_(src.height[0]) {}

void Pipeline::add(Work work, const Content &content, int32_t width,
                   int32_t height) {
  stages_[count_++] = {work, {}, content, width, height};
  width_ = width;
  height_ = height;
}

void Pipeline::add(const Chain &chain) {
  for (int32_t i = 0; i < chain.count; ++i) {
    const Conversion &conversion = chain.conversion[i];
    stages_[count_++] = {Work::kConvert, conversion, conversion.to, width_,
                         height_};
  }
}

Content Pipeline::content_before(int i) const {
  return i == 0 ? from_ : stages_[i - 1].content;
}

// Whether a stage can read the caller's source.
bool Pipeline::reads_source() const {
  const Stage &stage = stages_[0];
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
  const Stage &stage = stages_[count_ - 1];
  switch (stage.work) {
    case Work::kConvert:
      return is_tiled(dst_.format) ||
             !wants_even(stage.conversion, content_before(count_ - 1),
                         stage.width, stage.height);
    case Work::kThumbnail:
      return false;  // whole blocks are written
    case Work::kToneMap: {
      vexo_img dense;
      if (stage.width % 2 != 0 || describe(stage, &dense) != VEXO_OK) {
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
  if (count_ == 0) add(Work::kCopy, from_, width_, height_);
  if (!reads_source()) {
    for (int i = count_++; i > 0; --i) stages_[i] = stages_[i - 1];
    const bool words = stages_[0].work == Work::kToneMap;
    stages_[0] = {
        words ? Work::kWords : Work::kCopy,
        {},
        words ? content_of(VEXO_FMT_YUV420PLANAR16, from_.standard) : from_,
        src_.width[0],
        src_.height[0]};
  }
  if (!writes_destination()) {
    add(Work::kCopy, stages_[count_ - 1].content, width_, height_);
  }
}

vexo_img Pipeline::output(const vexo_picture_context &context, int i) const {
  if (i == count_ - 1) return dst_;
  vexo_img img;
  describe(stages_[i], &img);
  place_planes(&img, context.scratch[i % 2].data());
  return img;
}

int32_t Pipeline::prepare(vexo_picture_context *context) const {
  for (int i = 0; i < count_ - 1; ++i) {
    size_t bytes = 0;
    vexo_img img;
    // What has no geometry has no memory either.
    if (describe(stages_[i], &img) != VEXO_OK ||
        bytes_of(stages_[i], &bytes) != VEXO_OK ||
        !context->scratch[i % 2].reserve(bytes)) {
      return VEXO_ERR_MEMORY;
    }
  }
  for (int i = 0; i < count_; ++i) {
    if (stages_[i].work != Work::kThumbnail) continue;
    const vexo_img in = i == 0 ? src_ : output(*context, i - 1);
    const int32_t status =
        context->plan.make(in, output(*context, i), options_.prescale);
    if (status != VEXO_OK) return status;
  }
  return VEXO_OK;
}

int32_t Pipeline::run(vexo_picture_context *context) {
  complete();
  int32_t status = prepare(context);
  vexo_img in = src_;
  for (int i = 0; i < count_ && status == VEXO_OK; ++i) {
    const vexo_img out = output(*context, i);
    status = work(context, i, in, out);
    in = out;
  }
  return status;
}

int32_t Pipeline::work(vexo_picture_context *context, int i, vexo_img in,
                       vexo_img out) const {
  const Stage &stage = stages_[i];
  const auto rotation = static_cast<uint32_t>(options_.rotation);
  switch (stage.work) {
    case Work::kCopy:
      copy_step(in, out);
      return VEXO_OK;
    case Work::kConvert:
      if (stage.conversion.step != nullptr) {
        stage.conversion.step(in, out);
        return VEXO_OK;
      }
      if (wants_even(stage.conversion, content_before(i), stage.width,
                     stage.height)) {
        if (is_tiled(out.format)) clear_edge(in);
        in = even_view(in);
        out = even_view(out);
      }
      stage.conversion.route->convert(in, out);
      return VEXO_OK;
    case Work::kScale:
      out.mode = options_.mode;
      return memory_status(vexo_rsz(&in, &out));
    case Work::kScaleAndTurn:
      out.mode = options_.mode;
      // The codes are compared, also where turned planes are another format's.
      out.format = in.format;
      return memory_status(vexo_rsz_rot(&in, rotation, &out));
    case Work::kTurn:
      return turn(in, options_.rotation, out);
    case Work::kThumbnail:
      context->plan.run(in, out);
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
