// SPDX-License-Identifier: Apache-2.0
//
// The calls that do what is meant: checks, and the choice of the way.
#include "orumlox/picture.h"

#include "common/format.h"
#include "csc/routes.h"
#include "hdr/band.h"
#include "orumlox/apex.h"
#include "orumlox/hdr.h"
#include "orumlox/rot.h"
#include "orumlox/rsz.h"
#include "picture/formats.h"
#include "picture/pipeline.h"
#include "rot/rot.h"
#include "rsz/rsz.h"

namespace lox {

namespace {

// A call's own context where the caller has none.
class OwnContext {
 public:
  explicit OwnContext(vexo_picture_context *given) : context_(given) {
    if (given == nullptr && vexo_picture_context_new(&own_) == VEXO_OK) {
      context_ = own_;
    }
  }
  ~OwnContext() { vexo_picture_context_free(own_); }
  OwnContext(const OwnContext &) = delete;
  OwnContext &operator=(const OwnContext &) = delete;

  vexo_picture_context *get() const { return context_; }

 private:
  vexo_picture_context *context_;
  vexo_picture_context *own_ = nullptr;
};

bool known(const vexo_picture_options &o) {
  const bool turn = o.rotation >= VEXO_ROT_COPY && o.rotation <= VEXO_ROT_VERT;
  const bool kind = o.hdr_kind == 0 || o.hdr_kind == VEXO_HDR_HDR10 ||
                    o.hdr_kind == VEXO_HDR_HDR10_MILD ||
                    o.hdr_kind == VEXO_HDR_HLG;
  const bool prescale = o.prescale == 0 || o.prescale == 2 || o.prescale == 4;
  const bool mode = o.mode == 0 || o.mode == VEXO_MODE_MOD1;
  const auto flag = [](int32_t n) { return n == 0 || n == 1; };
  // So that what is reserved may mean something one day.
  for (const int32_t word : o.reserved) {
    if (word != 0) return false;
  }
  const bool chroma =
      o.chroma >= VEXO_CHROMA_AS_IT_IS && o.chroma <= VEXO_CHROMA_CENTRE;
  const bool filter =
      o.filter == VEXO_FILTER_PLAIN || o.filter == VEXO_FILTER_LANCZOS;
  return turn && kind && prescale && mode && chroma && o.source_nit >= 0 &&
         flag(o.measure) && flag(o.full_range) && flag(o.dither) && filter;
}

// A call's arguments once they are checked.
struct Request {
  int32_t status;
  vexo_picture_options options;
  Content from, to;

  // How conversions before a turn are made, and those behind it.
  Manner before() const { return {options.chroma, false, options.dither != 0}; }
  Manner after() const {
    Manner manner = before();
    manner.turned = options.rotation != VEXO_ROT_COPY &&
                    interpolates(find_chain(from, to, manner));
    return manner;
  }
};

Request check(const vexo_img *src, const vexo_img *dst,
              const vexo_picture_options *options) {
  Request r = {VEXO_OK, {}, {}, {}};
  if (options != nullptr) r.options = *options;
  r.status = check_picture(src);
  if (r.status == VEXO_OK) r.status = check_picture(dst);
  if (r.status == VEXO_OK && !known(r.options)) r.status = VEXO_ERR_ARG;
  if (r.status != VEXO_OK) return r;
  r.from = content_of(src->format, src->color_std);
  r.to = content_of(dst->format, dst->color_std);
  return r;
}

// What a side without a standard says of the other's.
int32_t check_standards(const Request &r, const vexo_img &src,
                        const vexo_img &dst) {
  if (place_of(r.from) < 0 || place_of(r.to) < 0) return VEXO_ERR_UNSUPPORTED;
  const bool one = has_standard(src.format) != has_standard(dst.format);
  const vexo_img &other = has_standard(src.format) ? dst : src;
  const int32_t standard =
      has_standard(src.format) ? src.color_std : dst.color_std;
  return one && other.color_std != 0 && other.color_std != standard
             ? VEXO_ERR_UNSUPPORTED
             : VEXO_OK;
}

// Converted by vexo_csc only if they are wider.
bool too_narrow(const vexo_img &src, const vexo_img &dst) {
  return src.format == VEXO_FMT_T256X16 && src.format != dst.format &&
         src.width[0] <= kT256x16WiderThan;
}

// What a turn makes of a content; a format of -1 where no layout holds that.
Content turned(const Content &content, int32_t rotation) {
  if (!is_quarter(rotation)) return content;
  switch (content.format) {
    case VEXO_FMT_YUV422N:
      return {VEXO_FMT_YUV422W, content.standard};
    case VEXO_FMT_YUV422W:
      return {VEXO_FMT_YUV422N, content.standard};
    case VEXO_FMT_YV16:
      return {-1, content.standard};
    default:
      return content;
  }
}

bool is_turned(int32_t format) {
  return is_10_bit(format) || format == VEXO_FMT_RGBA1010102 ||
         vexo_rot_supports(format, static_cast<uint32_t>(VEXO_ROT_COPY)) != 0;
}

// The way of a change of shape: the content in which it is done.
struct Way {
  int32_t cost = kNoWay;
  Content content = {};
};

// The cheapest content for which passes(content), those of the change, is not
// 0; of equal ones the first. A pass over the larger picture counts twice, and
// what is lost before a reduction more than what is lost after it.
template <class Passes>
Way find_way(const Request &r, const Manner &manner_after, bool reduces,
             Passes passes) {
  constexpr int32_t kLostBefore = 8;
  // Nothing is cheaper than the change alone.
  const int32_t alone = passes(r.from);
  if (alone != 0 && turned(r.from, r.options.rotation) == r.to) {
    return {alone, r.from};
  }
  const Costs before = costs_from(r.from, r.before());
  const Costs after = costs_to(r.to, manner_after);
  Way best;
  for (int32_t place = 0; place < kPlaces; ++place) {
    const Content content = content_at(place);
    if (before.of[place] == kNoWay) continue;
    const int32_t own = passes(content);
    const int32_t end = place_of(turned(content, r.options.rotation));
    if (own == 0 || end < 0 || after.of[end] == kNoWay) continue;
    int32_t cost = before.of[place] + own + after.of[end];
    if (!reduces) {
      cost += passes_of(after.of[end]);
    } else {
      cost += passes_of(before.of[place]);
      if (loses(before.of[place])) cost += kLostBefore;
    }
    // What is dithered is so in the destination, where the pattern shows.
    if (r.options.dither != 0 && before.of[place] >= kFewerBits) {
      cost += kFewerBits;
    }
    if (cost < best.cost) best = {cost, content};
  }
  return best;
}

// Whether block means leave enough to scale down from.
bool leaves_enough(int32_t prescale, const vexo_img &src, int32_t width,
                   int32_t height) {
  const int64_t w = src.width[0];
  const int64_t h = src.height[0];
  for (int64_t factor = 2; factor <= 4; factor *= 2) {
    if (w == factor * width && h == factor * height) return true;
  }
  const int64_t left = prescale == 2 ? w / 4 * 2 : (w / 4 + 1) / 2 * 2;
  const int64_t rows = h / prescale;
  return left >= width && rows >= height && rows >= 2;
}

int32_t plan_reshape(const vexo_img &src, const vexo_img &dst, const Request &r,
                     Plan *plan) {
  const int32_t rotation = r.options.rotation;
  const int32_t from_width = src.width[0];
  const int32_t from_height = src.height[0];
  // The size before the turn.
  const bool quarter = is_quarter(rotation);
  const int32_t to_width = (quarter ? dst.height : dst.width)[0];
  const int32_t to_height = (quarter ? dst.width : dst.height)[0];
  const bool scales = from_width != to_width || from_height != to_height;
  const bool turns = rotation != VEXO_ROT_COPY;
  // One call scales and turns planes of bytes.
  const bool lanczos = r.options.filter == VEXO_FILTER_LANCZOS;
  const auto at_once = [&](int32_t format) {
    return !lanczos && scales && turns && rotation <= VEXO_ROT_180 &&
           format < 100;
  };
  const auto passes = [&](const Content &content) {
    const int32_t format = content.format;
    const bool scaled =
        lanczos ? vexo_rsz_apex_supports(format) != 0
                : vexo_rsz_supports(format) == 1 || is_10_bit(format);
    if (scales && !scaled) return 0;
    if (turns && !is_turned(format)) return 0;
    return at_once(format) ? 1 : (scales ? 1 : 0) + (turns ? 1 : 0);
  };
  if (!scales && !turns) {
    const Chain chain = find_chain(r.from, r.to, r.before());
    return plan->add(chain) ? VEXO_OK : VEXO_ERR_UNSUPPORTED;
  }
  const Manner after = r.after();
  const Way way = find_way(
      r, after,
      int64_t{to_width} * to_height <= int64_t{from_width} * from_height,
      passes);
  if (way.cost == kNoWay) return VEXO_ERR_UNSUPPORTED;
  const Content end = turned(way.content, rotation);
  const bool before = plan->add(find_chain(r.from, way.content, r.before()));
  if (at_once(way.content.format)) {
    plan->add(Work::kScaleAndTurn, end, dst.width[0], dst.height[0]);
  } else {
    if (scales) plan->add(Work::kScale, way.content, to_width, to_height);
    if (turns) plan->add(Work::kTurn, end, dst.width[0], dst.height[0]);
  }
  return before && plan->add(find_chain(end, r.to, after))
             ? VEXO_OK
             : VEXO_ERR_UNSUPPORTED;
}

int32_t plan_tonemap(const vexo_img &src, const vexo_img &dst, const Request &r,
                     Plan *plan) {
  const bool rgb = !has_standard(dst.format);
  // RGB888 comes with gaps between its bands, and is taken from RGBA8888.
  Chain best;
  Content mapped = {};
  best.cost = kNoWay;
  for (const Format &format : kFormatTable) {
    const Content content = content_of(format.code, VEXO_STD_BT709);
    if (!maps_tones(src.format, format.code) ||
        format.code == VEXO_FMT_RGB888 || has_standard(format.code) == rgb) {
      continue;
    }
    const Chain chain = find_chain(content, r.to, r.before());
    if (chain.cost >= best.cost) continue;
    best = chain;
    mapped = content;
  }
  if (best.cost == kNoWay) return VEXO_ERR_UNSUPPORTED;
  plan->add(Work::kToneMap, mapped, src.width[0], src.height[0]);
  plan->add(best);
  return VEXO_OK;
}

int32_t plan_thumbnail(const vexo_img &src, const vexo_img &dst,
                       const Request &r, Plan *plan) {
  const int32_t rotation = r.options.rotation;
  const bool quarter = is_quarter(rotation);
  const int32_t width = (quarter ? dst.height : dst.width)[0];
  const int32_t height = (quarter ? dst.width : dst.height)[0];
  const Manner after = r.after();
  const Way way = find_way(r, after, true, [](const Content &content) {
    return content.format == VEXO_FMT_NV12 ||
                   content.format == VEXO_FMT_YUV400 ||
                   content.format == VEXO_FMT_RGBA8888
               ? 1
               : 0;
  });
  if (way.cost == kNoWay) return VEXO_ERR_UNSUPPORTED;
  if (way.content.format == VEXO_FMT_NV12 && r.options.prescale != 0 &&
      !leaves_enough(r.options.prescale, src, width, height)) {
    return VEXO_ERR_ARG;
  }
  const bool before = plan->add(find_chain(r.from, way.content, r.before()));
  plan->add(Work::kThumbnail, way.content, width, height);
  if (rotation != VEXO_ROT_COPY) {
    plan->add(Work::kTurn, way.content, dst.width[0], dst.height[0]);
  }
  return before && plan->add(find_chain(way.content, r.to, after))
             ? VEXO_OK
             : VEXO_ERR_UNSUPPORTED;
}

// Does what was asked for by the plan that serves.
int32_t carry_out(vexo_picture_context *given, Call call, const vexo_img &src,
                  const vexo_img &dst, const Request &r) {
  const OwnContext own(given);
  vexo_picture_context *const context = own.get();
  if (context == nullptr) return VEXO_ERR_MEMORY;
  const Question question = {call,          r.from,        r.to,
                             src.width[0],  src.height[0], dst.width[0],
                             dst.height[0], r.options};
  const Plan *plan = context->recent.find(question);
  if (plan == nullptr) {
    Plan fresh = {};
    fresh.width = src.width[0];
    fresh.height = src.height[0];
    const auto make = call == Call::kReshape   ? plan_reshape
                      : call == Call::kToneMap ? plan_tonemap
                                               : plan_thumbnail;
    const int32_t status = make(src, dst, r, &fresh);
    if (status != VEXO_OK) return status;
    plan = context->recent.keep(question, fresh);
  }
  return Pipeline(src, dst, r.options, *plan).run(context);
}

// With the option's turn, or without one.
int32_t reshape(vexo_picture_context *context, const vexo_img *src,
                const vexo_img *dst, const vexo_picture_options *options,
                bool turns, bool scales) {
  Request r = check(src, dst, options);
  if (r.status != VEXO_OK) return r.status;
  if (!turns) r.options.rotation = VEXO_ROT_COPY;
  const bool quarter = is_quarter(r.options.rotation);
  if (!scales && (src->width[0] != (quarter ? dst->height : dst->width)[0] ||
                  src->height[0] != (quarter ? dst->width : dst->height)[0])) {
    return VEXO_ERR_ARG;
  }
  const int32_t status = check_standards(r, *src, *dst);
  if (status != VEXO_OK) return status;
  if (too_narrow(*src, *dst)) return VEXO_ERR_UNSUPPORTED;
  return carry_out(context, Call::kReshape, *src, *dst, r);
}

}  // namespace

}  // namespace lox

extern "C" {

int32_t vexo_csc_supports(int32_t src_format, int32_t dst_format,
                          int32_t color_std) {
  using namespace lox;
  const bool counts = (is_rgb(src_format) && is_yuv(dst_format)) ||
                      (is_yuv(src_format) && is_rgb(dst_format));
  for (const Route &route : csc_routes(counts ? color_std : VEXO_STD_DEFAULT)) {
    if (route.src_format == src_format && route.dst_format == dst_format) {
      return 1;
    }
  }
  return 0;
}

int32_t vexo_rsz_supports(int32_t format) {
  if (format == VEXO_FMT_P010LE) return 2;
  return lox::find_format(format) != nullptr && !lox::is_tiled(format) &&
                 lox::is_scaled(format)
             ? 1
             : 0;
}

int32_t vexo_rot_supports(int32_t format, uint32_t rotation) {
  return lox::find_format(format) != nullptr && !lox::is_tiled(format) &&
                 lox::turned_unit(format) != 0 && rotation <= VEXO_ROT_VERT
             ? 1
             : 0;
}

int32_t vexo_hdr_supports(int32_t src_format, int32_t dst_format) {
  return lox::maps_tones(src_format, dst_format) ? 1 : 0;
}

int32_t vexo_picture_passes(int32_t src_format, int32_t src_std,
                            int32_t dst_format, int32_t dst_std,
                            int32_t formats[VEXO_MOST_STOPS]) {
  using namespace lox;
  const Content from = content_of(src_format, src_std);
  const Content to = content_of(dst_format, dst_std);
  if (place_of(from) < 0 || place_of(to) < 0) return 0;
  const Chain chain = find_chain(from, to, {});
  if (chain.cost == kNoWay) return 0;
  const int32_t passes = chain.count > 0 ? chain.count : 1;
  if (formats != nullptr) {
    formats[0] = src_format;
    for (int32_t i = 0; i < passes; ++i) {
      formats[i + 1] =
          chain.count > 0 ? chain.conversion[i].to.format : dst_format;
    }
  }
  return passes;
}

int32_t vexo_picture_convert(vexo_picture_context *context, const vexo_img *src,
                             const vexo_img *dst,
                             const vexo_picture_options *options) {
  return lox::reshape(context, src, dst, options, false, false);
}

int32_t vexo_picture_scale(vexo_picture_context *context, const vexo_img *src,
                           const vexo_img *dst,
                           const vexo_picture_options *options) {
  return lox::reshape(context, src, dst, options, true, true);
}

int32_t vexo_picture_turn(vexo_picture_context *context, const vexo_img *src,
                          const vexo_img *dst,
                          const vexo_picture_options *options) {
  return lox::reshape(context, src, dst, options, true, false);
}

int32_t vexo_picture_tonemap(vexo_picture_context *context, const vexo_img *src,
                             const vexo_img *dst,
                             const vexo_picture_options *options) {
  using namespace lox;
  Request r = check(src, dst, options);
  if (r.status != VEXO_OK) return r.status;
  if (src->width[0] != dst->width[0] || src->height[0] != dst->height[0]) {
    return VEXO_ERR_ARG;
  }
  if (has_standard(dst->format) && dst->color_std != VEXO_STD_DEFAULT &&
      dst->color_std != VEXO_STD_BT709) {
    return VEXO_ERR_UNSUPPORTED;
  }
  r.to = content_of(dst->format, VEXO_STD_BT709);
  return carry_out(context, Call::kToneMap, *src, *dst, r);
}

int32_t vexo_picture_thumbnail(vexo_picture_context *context,
                               const vexo_img *src, const vexo_img *dst,
                               const vexo_picture_options *options) {
  using namespace lox;
  const Request r = check(src, dst, options);
  if (r.status != VEXO_OK) return r.status;
  const int32_t rotation = r.options.rotation;
  const bool quarter = is_quarter(rotation);
  const int32_t width = (quarter ? dst->height : dst->width)[0];
  const int32_t height = (quarter ? dst->width : dst->height)[0];
  if (width > src->width[0] || height > src->height[0]) return VEXO_ERR_ARG;
  const int32_t status = check_standards(r, *src, *dst);
  if (status != VEXO_OK) return status;
  if (too_narrow(*src, *dst)) return VEXO_ERR_UNSUPPORTED;
  return carry_out(context, Call::kThumbnail, *src, *dst, r);
}

}  // extern "C"
