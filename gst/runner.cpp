// SPDX-License-Identifier: Apache-2.0
#include "runner.h"

#include <orumlox/csc_new.h>
#include <orumlox/deep.h>
#include <orumlox/rot.h>
#include <orumlox/rsz.h>

#include "frame.h"

namespace lox_gst {

namespace {

bool is_deep(int32_t format) { return format >= VEXO_FMT_YUV420PLANAR16; }

bool has_pairs_of_rows(int32_t format) {
  return format == VEXO_FMT_YUV420 || format == VEXO_FMT_YV12 ||
         format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21 || is_deep(format);
}

// Grey has no chroma to interpolate.
bool has_chroma(int32_t format) {
  return (format > VEXO_FMT_YUV400 && format < VEXO_FMT_RGB565) ||
         is_deep(format);
}

// Turned by a quarter, chroma of half the width alone is another layout's.
bool is_turned(int32_t format, int32_t rotation) {
  const bool quarter = is_quarter(rotation);
  return vexo_rot_supports(format, static_cast<uint32_t>(rotation)) != 0 &&
         !(quarter && format == VEXO_FMT_YUV422N);
}

// Rows y0 to y1 - 1 of a picture, y0 being even.
vexo_img rows_of(const vexo_img &img, int32_t y0, int32_t y1) {
  uint8_t *planes[4];
  for (int32_t p = 0; p < vexo_format_planes(img.format); ++p) {
    const int32_t first = p > 0 && has_pairs_of_rows(img.format) ? y0 / 2 : y0;
    planes[p] = img.plane[p] + ptrdiff_t{first} * img.stride[p];
  }
  vexo_img part = {};
  vexo_picture_wrap(&part, img.format, img.width[0], y1 - y0, planes,
                    img.stride);
  part.color_std = img.color_std;
  return part;
}

// Where the part of a thread begins: patterns repeat every eight rows, of
// chroma, too.
int32_t first_row(int32_t height, guint index, guint count) {
  const int64_t row = int64_t{height} * index / count;
  return index == count ? height : static_cast<int32_t>(row & ~int64_t{15});
}

}  // namespace

void Runner::set_threads(guint threads) {
  if (threads == 0) threads = g_get_num_processors();
  g_mutex_lock(&mutex_);
  threads_ = threads < kMostThreads ? threads : kMostThreads;
  next_ = threads_;  // nothing for one that comes late
  g_mutex_unlock(&mutex_);
}

Runner::Runner() {
  g_mutex_init(&mutex_);
  g_cond_init(&done_);
}

Runner::~Runner() {
  if (pool_ != nullptr) g_thread_pool_free(pool_, TRUE, TRUE);
  for (vexo_picture_context *context : contexts_) {
    vexo_picture_context_free(context);
  }
  for (vexo_img &img : between_) vexo_picture_free(&img);
  g_cond_clear(&done_);
  g_mutex_clear(&mutex_);
}

int32_t Runner::make_context(guint index) {
  return contexts_[index] != nullptr
             ? VEXO_OK
             : vexo_picture_context_new(&contexts_[index]);
}

int32_t Runner::run_part(guint index) {
  const int32_t height = dst_->height[0];
  const int32_t y0 = first_row(height, index, threads_);
  const int32_t y1 = first_row(height, index + 1, threads_);
  if (y0 >= y1) return VEXO_OK;
  switch (work_) {
    case Work::kScale: {
      const int32_t status = vexo_rsz_rows(src_, dst_, y0, y1);
      // Whole factors of P010 are its own.
      return status == VEXO_ERR_UNSUPPORTED && is_deep(src_->format)
                 ? vexo_rsz_deep_rows(src_, dst_, y0, y1)
                 : status;
    }
    case Work::kTurn:
      return vexo_rot_rows(src_, static_cast<uint32_t>(options_.rotation), dst_,
                           y0, y1);
    case Work::kInterpolate:
      return vexo_csc_new_rows(src_, dst_, y0, y1);
    case Work::kRows:
      rows_work_(rows_of(*dst_, y0, y1), rows_data_);
      return VEXO_OK;
    case Work::kConvert:
      break;
  }
  const int32_t status = make_context(index);
  if (status != VEXO_OK) return status;
  const vexo_img src = rows_of(*src_, y0, y1);
  const vexo_img dst = rows_of(*dst_, y0, y1);
  return vexo_picture_convert(contexts_[index], &src, &dst, &options_);
}

void Runner::work_on(gpointer, gpointer self) {
  static_cast<Runner *>(self)->work();
}

// Takes parts as long as there are any.
void Runner::work() {
  g_mutex_lock(&mutex_);
  while (next_ < threads_) {
    const guint part = next_++;
    g_mutex_unlock(&mutex_);
    const int32_t status = run_part(part);
    g_mutex_lock(&mutex_);
    if (status != VEXO_OK) status_ = status;
    if (++finished_ == threads_) g_cond_signal(&done_);
  }
  g_mutex_unlock(&mutex_);
}

// A stage by all threads, this one among them: it does what no other begins.
int32_t Runner::run_stage(Work work, const vexo_img &src, const vexo_img &dst) {
  if (pool_ == nullptr) {
    pool_ = g_thread_pool_new(work_on, this, -1, FALSE, nullptr);
  }
  g_mutex_lock(&mutex_);
  work_ = work;
  src_ = &src;
  dst_ = &dst;
  next_ = finished_ = 0;
  status_ = VEXO_OK;
  g_mutex_unlock(&mutex_);
  for (guint i = 1; i < threads_; ++i) {
    g_thread_pool_push(pool_, this, nullptr);
  }
  this->work();
  g_mutex_lock(&mutex_);
  while (finished_ < threads_) g_cond_wait(&done_, &mutex_);
  const int32_t status = status_;
  g_mutex_unlock(&mutex_);
  return status;
}

// The stages that vexo_picture_scale would go through, where these are scaling
// and turning in the format of one of the ends and one conversion: a reduction
// or a turn comes before the conversion, an enlargement after it, and a turn
// after one that interpolates.
bool Runner::divide(const vexo_img &src, const vexo_img &dst,
                    const vexo_picture_options &options, int32_t *status) {
  // What is filtered looks beyond the rows of a part.
  if (options.filter != 0) return false;
  const int32_t rotation = options.rotation;
  const bool quarter = is_quarter(rotation);
  const int32_t width = (quarter ? dst.height : dst.width)[0];
  const int32_t height = (quarter ? dst.width : dst.height)[0];
  const bool scales = src.width[0] != width || src.height[0] != height;
  const bool turns = rotation != VEXO_ROT_COPY;
  const bool converts =
      src.format != dst.format || src.color_std != dst.color_std;
  const bool interpolates =
      options.chroma != VEXO_CHROMA_AS_IT_IS && has_chroma(src.format) &&
      (!has_chroma(dst.format) || src.color_std != dst.color_std);
  const bool first = !converts || (int64_t{width} * height <=
                                       int64_t{src.width[0]} * src.height[0] &&
                                   !(turns && interpolates));
  const int32_t format = (first ? src : dst).format;
  // By way of RGB interpolation is one conversion of several, bits are lost
  // where that loses least, and what is dithered is so last.
  if ((interpolates &&
       (options.dither != 0 ||
        vexo_csc_new_supports(src.format, dst.format, src.color_std) == 0)) ||
      (converts && is_deep(src.format) && (scales || turns)) ||
      (converts && !first && options.dither != 0) ||
      (scales && !is_deep(format) && vexo_rsz_supports(format) != 1) ||
      (turns && !is_turned(format, rotation)) ||
      (scales && turns && converts && !first)) {
    return false;
  }
  Work stages[3];
  int32_t count = 0;
  const Work conversion = interpolates ? Work::kInterpolate : Work::kConvert;
  if (converts && !first) stages[count++] = conversion;
  if (scales) stages[count++] = Work::kScale;
  if (turns) stages[count++] = Work::kTurn;
  if (converts ? first : count == 0) stages[count++] = conversion;
  options_ = options;
  vexo_img out = dst;
  out.mode = options.mode;
  vexo_img in = src;
  if (interpolates && options.chroma == VEXO_CHROMA_CENTRE) {
    in.reserved1 = VEXO_SITING_CENTRE;
  }
  for (int32_t i = 0; i < count && *status == VEXO_OK; ++i) {
    vexo_img to = out;
    if (i < count - 1) {
      const bool turned = stages[i] == Work::kTurn;
      const bool converted = stages[i] == conversion;
      const bool scaled = stages[i] == Work::kScale;
      *status = make_between(i, converted ? dst.format : in.format,
                             turned   ? dst.width[0]
                             : scaled ? width
                                      : in.width[0],
                             turned   ? dst.height[0]
                             : scaled ? height
                                      : in.height[0]);
      to = between_[i];
      to.color_std = (converted ? dst : in).color_std;
      to.reserved1 = in.reserved1;
      to.mode = options.mode;
    }
    if (*status == VEXO_OK) *status = run_stage(stages[i], in, to);
    in = to;
  }
  return true;
}

int32_t Runner::make_between(int32_t i, int32_t format, int32_t width,
                             int32_t height) {
  vexo_img &img = between_[i];
  if (img.plane[0] != nullptr && img.format == format &&
      img.width[0] == width && img.height[0] == height) {
    return VEXO_OK;
  }
  vexo_picture_free(&img);
  return vexo_picture_alloc(&img, format, width, height);
}

int32_t Runner::run(const vexo_img &src, const vexo_img &dst,
                    const vexo_picture_options &options) {
  int32_t status = VEXO_OK;
  if (threads_ > 1 && divide(src, dst, options, &status)) return status;
  status = make_context(0);
  return status != VEXO_OK
             ? status
             : vexo_picture_scale(contexts_[0], &src, &dst, &options);
}

void Runner::for_rows(const vexo_img &img, RowsWork *on_rows,
                      const void *data) {
  if (threads_ == 1) {
    on_rows(img, data);
    return;
  }
  rows_work_ = on_rows;
  rows_data_ = data;
  run_stage(Work::kRows, img, img);
}

int32_t Runner::thumbnail(const vexo_img &src, const vexo_img &dst,
                          const vexo_picture_options &options) {
  const int32_t status = make_context(0);
  return status != VEXO_OK
             ? status
             : vexo_picture_thumbnail(contexts_[0], &src, &dst, &options);
}

}  // namespace lox_gst
