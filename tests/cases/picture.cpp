// SPDX-License-Identifier: Apache-2.0
// Pictures that lay themselves out, and what is done with them.
#include <orumlox/orumlox.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "cases/picture.h"

namespace lox_test {
namespace {

// A number of codes; the last is a plane or a turn where that is `small`.
template <bool kSmall, class... Numbers>
void number(const Function &function, Source &source, Sink &sink) {
  size_t left = sizeof...(Numbers);
  const auto draw = [&] {
    return --left == 0 && kSmall ? source.between(-1, 7) : source.format();
  };
  const auto call = function.as<int32_t(Numbers...)>();
  const std::tuple<Numbers...> numbers{static_cast<Numbers>(draw())...};
  sink.add(static_cast<uint32_t>(std::apply(call, numbers)));
}

void text(const Function &function, Source &source, Sink &sink) {
  const int32_t code = source.format();
  const char *const name = function.as<const char *(int32_t)>()(code);
  if (name == nullptr) return;
  sink.add(reinterpret_cast<const uint8_t *>(name), std::strlen(name));
  // Upper case means the same.
  std::string upper = name;
  for (char &c : upper) c = static_cast<char>(std::toupper(c));
  sink.add(static_cast<uint32_t>(vexo_format_of_name(upper.c_str())));
}

void of_name(const Function &function, Source &source, Sink &sink) {
  constexpr const char *kNames[] = {
      "i420",  "YUV420p",     "gray", "nv12 ", "p010le",  "rgb24",   "yuyv422",
      nullptr, "yuv420p10le", "",     "bgr0",  "yuv440p", "uyvy422", "Bgra"};
  const char *const name = source.one_of(kNames);
  sink.add(static_cast<uint32_t>(
      function.as<decltype(vexo_format_of_name)>()(name)));
}

// What was laid out, the planes by their distances.
void add_layout(const vexo_img &img, const uint8_t *memory, Sink &sink) {
  for (int p = 0; p < 4; ++p) {
    for (const auto &field :
         {img.width, img.height, img.stride, img.buf_height}) {
      sink.add(static_cast<uint32_t>(field[p]));
    }
    sink.add(static_cast<uint64_t>(
        img.plane[p] == nullptr ? -1 : img.plane[p] - memory));
  }
  sink.add(static_cast<uint32_t>(img.format));
}

// All five ways to lay one out.
void layout(const Function &function, Source &source, Sink &sink) {
  const int32_t format = source.format();
  const auto [width, height] = source.size();
  const int32_t alignment =
      source.one_in(4) ? source.between(-1, 5000) : 1 << source.between(0, 13);
  const std::string_view name = function.name;
  size_t bytes = 0;
  vexo_img img = {};
  img.format = -5;
  const bool known =
      vexo_picture_bytes(format, width, height, alignment, &bytes) == VEXO_OK;
  // What an empty side claims of the other is more than memory has.
  Buffer memory(source, known && bytes < 1 << 24 ? bytes : 0);
  const size_t short_by = source.one_in(4) ? 1 : 0;
  int32_t status = 0;
  if (name == "vexo_picture_bytes") {
    status = function.as<decltype(vexo_picture_bytes)>()(format, width, height,
                                                         alignment, &bytes);
    sink.add(bytes);
  } else if (name == "vexo_picture_geometry") {
    status = function.as<decltype(vexo_picture_geometry)>()(&img, format, width,
                                                            height, alignment);
  } else if (name == "vexo_picture_layout") {
    status = function.as<decltype(vexo_picture_layout)>()(
        &img, format, width, height, alignment, memory.data(),
        memory.size() - std::min(memory.size(), short_by));
  } else if (name == "vexo_picture_wrap") {
    uint8_t *const planes[] = {memory.data(), memory.data(), memory.data()};
    const int32_t strides[] = {source.between(-999, 999),
                               source.between(-99, 999), 64};
    status = function.as<decltype(vexo_picture_wrap)>()(
        &img, format, width, height, planes, strides);
  } else if (memory.size() > 0 || !known) {
    const bool frees = name == "vexo_picture_free";
    status = frees ? vexo_picture_alloc(&img, format, width, height)
                   : function.as<decltype(vexo_picture_alloc)>()(&img, format,
                                                                 width, height);
    sink.add(static_cast<uint32_t>(status));
    add_layout(img, img.plane[0], sink);
    if (status == VEXO_OK) sink.add(img.plane[0], 1);
    if (frees) function.as<decltype(vexo_picture_free)>()(&img);
    if (!frees && status == VEXO_OK) vexo_picture_free(&img);
  }
  sink.add(static_cast<uint32_t>(status));
  add_layout(img, memory.data(), sink);
}

// A context for all cases of a thread, or none.
struct Kept {
  vexo_picture_context *context = nullptr;
  Kept() { vexo_picture_context_new(&context); }
  ~Kept() { vexo_picture_context_free(context); }
};

void fresh_context(const Function &, Source &, Sink &sink) {
  const Kept kept;
  sink.add(kept.context != nullptr);
}

void set_picture(Source &source, Picture &picture, int32_t format,
                 int32_t width, int32_t height) {
  const ExactImage image = picture_image(format, width, height);
  picture.draw_strides(image, Rows::kEitherWay);
  for (int p = 0; p < 3; ++p) {
    int32_t &stride = picture.img.stride[p];
    if (format >= 600 || format / 100 == 2) stride &= ~1;
    picture.set_plane(p, image[p], image[p].bytes(stride));
  }
  picture.img.format = format;
  picture.img.color_std =
      source.one_in(2) ? 0 : source.one_of(kPictureStandards);
}

// Something that is refused, in most cases.
void spoil(Source &source, vexo_img *src, vexo_img *dst,
           vexo_picture_options *options) {
  vexo_img *const img = source.one_in(2) ? src : dst;
  switch (source.between(0, 6)) {
    case 0:
      img->plane[source.between(0, 2)] = nullptr;
      return;
    case 1:
      img->stride[source.between(0, 2)] = 0;
      return;
    case 2:
      (source.one_in(2) ? img->width : img->height)[0] = source.between(-1, 0);
      return;
    case 3:
      img->format = source.one_in(2) ? 9 : -1;
      return;
    case 4:
      img->color_std = source.between(-1, 12);
      return;
    case 5:
      options->rotation = source.one_in(2) ? 6 : -1;
      return;
    default:
      (source.one_in(2) ? options->source_nit : options->reserved[5]) = -1;
  }
}

void call(const Function &function, Source &source, Sink &sink) {
  constexpr int32_t kRotations[] = {0, 0, 0, 1, 2, 3, 4, 5};
  const std::string_view name = function.name;
  const bool maps = name == "vexo_picture_tonemap";
  const bool reduces = name == "vexo_picture_thumbnail";
  const bool turns = name != "vexo_picture_convert" && !maps;
  const bool scales = turns && name != "vexo_picture_turn";
  const int32_t from = maps ? source.between(600, 601) : known_format(source);
  const int32_t to = source.one_in(4) ? from : known_format(source);
  const int32_t width = from == VEXO_FMT_T256X16 && !scales
                            ? source.between(1279, 1285)
                            : std::max(source.width(), 1);
  const int32_t height = std::max(source.height(), 1);
  vexo_picture_options options = {};
  options.rotation = source.one_of(kRotations);
  options.mode = source.one_in(2) ? 0 : VEXO_MODE_MOD1;
  options.prescale = 2 * source.between(0, 2);
  options.hdr_kind = source.between(0, 2) * source.between(1, 2);
  options.source_nit = source.one_in(2) ? 0 : 1501;
  options.measure = source.between(0, 1);
  options.full_range = source.between(0, 1);
  options.filter = source.one_in(3) ? 1 : 0;
  options.dither = source.one_in(3) ? 1 : 0;
  options.chroma = source.one_in(2) ? 0 : source.between(0, 2);
  int32_t to_width = width;
  int32_t to_height = height;
  if (scales && !source.one_in(8)) {
    to_width = source.between(1, reduces ? width : 40);
    to_height = source.between(1, reduces ? height : 40);
    // By whole factors.
    if (source.one_in(4)) {
      to_width = std::max(width / source.between(2, 4), 1);
      to_height = std::max(height / source.between(2, 4), 1);
    }
  }
  if (turns && (options.rotation == 1 || options.rotation == 2)) {
    std::swap(to_width, to_height);
  }
  Picture src(source);
  Picture dst(source);
  set_picture(source, src, from, width, height);
  set_picture(source, dst, to, to_width, to_height);
  if (source.one_in(2)) dst.img.color_std = src.img.color_std;
  if (source.one_in(16)) spoil(source, &src.img, &dst.img, &options);
  static thread_local const Kept kept;
  vexo_picture_context *const context =
      source.one_in(2) ? nullptr : kept.context;
  sink.add(static_cast<uint32_t>(function.as<decltype(vexo_picture_convert)>()(
      context, &src.img, &dst.img,
      source.one_in(8) && !turns ? nullptr : &options)));
  dst.add_to(sink);
}

void passes(const Function &function, Source &source, Sink &sink) {
  int32_t formats[VEXO_MOST_STOPS] = {};
  const auto side = [&] { return source.one_of(kPictureStandards); };
  const int32_t from = known_format(source);
  const int32_t from_std = side();
  const int32_t to = source.format();
  const int32_t to_std = source.one_in(2) ? from_std : side();
  const int32_t count = function.as<decltype(vexo_picture_passes)>()(
      from, from_std, to, to_std, formats);
  sink.add(static_cast<uint32_t>(count));
  for (const int32_t format : formats) sink.add(static_cast<uint32_t>(format));
}

const Function kFunctions[] = {
    LOX_FUNCTION(call, vexo_picture_convert),
    LOX_FUNCTION(call, vexo_picture_scale),
    LOX_FUNCTION(call, vexo_picture_turn),
    LOX_FUNCTION(call, vexo_picture_tonemap),
    LOX_FUNCTION(call, vexo_picture_thumbnail),
    LOX_FUNCTION(passes, vexo_picture_passes),
    LOX_FUNCTION(layout, vexo_picture_alloc),
    LOX_FUNCTION(layout, vexo_picture_bytes),
    LOX_FUNCTION(layout, vexo_picture_free),
    LOX_FUNCTION(layout, vexo_picture_geometry),
    LOX_FUNCTION(layout, vexo_picture_layout),
    LOX_FUNCTION(layout, vexo_picture_wrap),
    LOX_FUNCTION(fresh_context, vexo_picture_context_new),
    LOX_FUNCTION(fresh_context, vexo_picture_context_free),
    LOX_FUNCTION(text, vexo_format_name),
    LOX_FUNCTION(text, vexo_status_name),
    LOX_FUNCTION(of_name, vexo_format_of_name),
    LOX_FUNCTION((number<false, int32_t>), vexo_format_next),
    LOX_FUNCTION((number<false, int32_t>), vexo_format_planes),
    LOX_FUNCTION((number<true, int32_t, int32_t>), vexo_format_sample_bytes),
    LOX_FUNCTION((number<false, int32_t, int32_t, int32_t>), vexo_csc_supports),
    LOX_FUNCTION((number<false, int32_t>), vexo_rsz_supports),
    LOX_FUNCTION((number<true, int32_t, uint32_t>), vexo_rot_supports),
    LOX_FUNCTION((number<false, int32_t, int32_t>), vexo_hdr_supports),
};

}  // namespace

const Family picture_family = make_family("picture", 100, kFunctions);

}  // namespace lox_test
