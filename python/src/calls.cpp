// SPDX-License-Identifier: Apache-2.0
//
// The calls that make pictures of pictures. The GIL is released meanwhile.
#include <orumlox/hdr.h>
#include <orumlox/rot.h>

#include <algorithm>
#include <optional>

#include "arguments.h"

namespace orumlox_python {

namespace {

// --- options ----------------------------------------------------------------

enum : unsigned {
  kConvert = 1,
  kScale = 2,
  kTurn = 4,
  kToneMap = 8,
  kThumb = 16,
  kAll = 31
};

constexpr Named kRotations[] = {{"0", VEXO_ROT_COPY},
                                {"left", VEXO_ROT_90L},
                                {"right", VEXO_ROT_90R},
                                {"half", VEXO_ROT_180},
                                {"mirror", VEXO_ROT_HORI},
                                {"flip", VEXO_ROT_VERT},
                                {}};
constexpr Named kModes[] = {{"plain", 0}, {"mod1", VEXO_MODE_MOD1}, {}};
constexpr Named kKinds[] = {{"hdr10", VEXO_HDR_HDR10},
                            {"hdr10-mild", VEXO_HDR_HDR10_MILD},
                            {"hlg", VEXO_HDR_HLG},
                            {}};

constexpr Named kFilters[] = {
    {"plain", VEXO_FILTER_PLAIN}, {"lanczos", VEXO_FILTER_LANCZOS}, {}};
constexpr Named kChromas[] = {{"as-it-is", VEXO_CHROMA_AS_IT_IS},
                              {"left", VEXO_CHROMA_LEFT},
                              {"centre", VEXO_CHROMA_CENTRE},
                              {}};

// A keyword, the calls that take it, and the names of its values; without names
// they are numbers.
struct Option {
  const char *name;
  int32_t vexo_picture_options::*member;
  unsigned calls;
  const Named *names;
};
constexpr Option kOptions[] = {
    {"rotation", &vexo_picture_options::rotation, kScale | kThumb, kRotations},
    {"mode", &vexo_picture_options::mode, kScale, kModes},
    {"prescale", &vexo_picture_options::prescale, kThumb, nullptr},
    {"kind", &vexo_picture_options::hdr_kind, kToneMap, kKinds},
    {"source_nit", &vexo_picture_options::source_nit, kToneMap, nullptr},
    {"measure", &vexo_picture_options::measure, kToneMap, nullptr},
    {"full_range", &vexo_picture_options::full_range, kToneMap, nullptr},
    {"filter", &vexo_picture_options::filter, kScale, kFilters},
    {"dither", &vexo_picture_options::dither, kAll, nullptr},
    {"chroma", &vexo_picture_options::chroma, kAll, kChromas},
};

int32_t value_of(const Option &option, const py::handle &given) {
  if (option.names == nullptr) return argument<int32_t>(given, option.name);
  const auto text = argument<std::string>(given, option.name);
  std::string known;
  for (const Named *entry = option.names; entry->name != nullptr; ++entry) {
    if (text == entry->name) return entry->value;
    known += std::string(known.empty() ? "" : ", ") + entry->name;
  }
  throw py::value_error(std::string("unknown ") + option.name + " '" + text +
                        "': " + known);
}

// --- one call ---------------------------------------------------------------

using Function = int32_t(vexo_picture_context *, const vexo_img *,
                         const vexo_img *, const vexo_picture_options *);

struct Call {
  const char *name;
  unsigned bit;
  Function *function;
};

// Every thread's own, kept until it ends.
class Context {
 public:
  Context() = default;
  ~Context() { vexo_picture_context_free(context_); }
  Context(const Context &) = delete;
  Context &operator=(const Context &) = delete;

  vexo_picture_context *get() {
    if (context_ == nullptr) vexo_picture_context_new(&context_);
    return context_;
  }

 private:
  vexo_picture_context *context_ = nullptr;
};
thread_local Context thread_context;

struct Size {
  int32_t width, height;
};

// What the caller gave besides the source and the call's options.
struct Wish {
  std::optional<Size> size;
  const char *format, *standard;
  py::object out;
};

void take(vexo_picture_options *options, const Call &call,
          const py::kwargs &given) {
  for (const auto &[key, value] : given) {
    const auto name = key.cast<std::string>();
    const Option *const option = std::find_if(
        std::begin(kOptions), std::end(kOptions), [&](const Option &o) {
          return (o.calls & call.bit) != 0 && name == o.name;
        });
    if (option == std::end(kOptions)) {
      throw py::type_error(std::string(call.name) +
                           "() got an unexpected keyword argument '" + name +
                           "'");
    }
    options->*option->member = value_of(*option, value);
  }
}

bool is_quarter(int32_t rotation) {
  return rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
}

// Colours of the result, and of the source where the result has no standard.
void set_standards(const Call &call, const char *standard, vexo_img *src,
                   vexo_img *dst) {
  if (!has_standard(dst->format)) {
    if (standard != nullptr) src->color_std = standard_named(standard);
  } else if (call.bit == kToneMap) {
    dst->color_std = VEXO_STD_BT709;
  } else if (standard != nullptr) {
    dst->color_std = standard_named(standard);
  } else if (has_standard(src->format)) {
    dst->color_std = src->color_std;
  }
}

py::object run(const Call &call, const py::handle &source, const Wish &wish,
               const vexo_picture_options &options) {
  Argument from, to;
  const Picture &picture = from.source(source);
  vexo_img src = picture.img;
  const int32_t format =
      wish.format == nullptr ? src.format : format_named(wish.format);
  const bool makes = wish.out.is_none();
  py::object made;
  if (makes) {
    Size size = {src.width[0], src.height[0]};
    if (is_quarter(options.rotation)) std::swap(size.width, size.height);
    if (wish.size) size = *wish.size;
    made = py::cast(Picture(format, size.width, size.height));
  }
  Picture &result =
      makes ? made.cast<Picture &>() : to.destination(wish.out, format);
  vexo_img dst = result.img;
  if (!makes) {
    check_pair(call.name, src, result);
    if ((wish.format != nullptr && format != dst.format) ||
        (wish.size && (wish.size->width != dst.width[0] ||
                       wish.size->height != dst.height[0]))) {
      throw py::value_error(std::string(call.name) + ": out is " +
                            result.describe());
    }
  }
  // A picture to write to keeps its standard if none is given.
  const bool keeps =
      !makes && wish.standard == nullptr && py::isinstance<Picture>(wish.out);
  if (!keeps) set_standards(call, wish.standard, &src, &dst);
  int32_t status;
  {
    const WithoutGil without;
    status = call.function(thread_context.get(), &src, &dst, &options);
  }
  if (status != VEXO_OK) {
    Picture meant;
    meant.img = dst;
    check(status, std::string(call.name) + " of " + picture.describe() +
                      " to " + meant.describe());
  }
  result.img.color_std = dst.color_std;
  return makes ? made : wish.out;
}

// --- the calls --------------------------------------------------------------

constexpr Call kConvertCall = {"convert", kConvert, vexo_picture_convert};
constexpr Call kScaleCall = {"scale", kScale, vexo_picture_scale};
constexpr Call kTurnCall = {"turn", kTurn, vexo_picture_turn};
constexpr Call kToneMapCall = {"tonemap", kToneMap, vexo_picture_tonemap};
constexpr Call kThumbCall = {"thumbnail", kThumb, vexo_picture_thumbnail};

py::object convert(const py::object &source, const char *format,
                   const char *standard, const py::object &out,
                   const py::kwargs &given) {
  vexo_picture_options options = {};
  take(&options, kConvertCall, given);
  return run(kConvertCall, source, {{}, format, standard, out}, options);
}

py::object turn(const py::object &source, const py::object &rotation,
                const char *format, const char *standard, const py::object &out,
                const py::kwargs &given) {
  vexo_picture_options options = {};
  take(&options, kTurnCall, given);
  options.rotation = value_of(kOptions[0], rotation);
  return run(kTurnCall, source, {{}, format, standard, out}, options);
}

py::object tonemap(const py::object &source, const char *format,
                   const py::object &out, const py::kwargs &given) {
  vexo_picture_options options = {};
  options.full_range = 1;
  take(&options, kToneMapCall, given);
  const bool named = format != nullptr || py::isinstance<Picture>(out);
  return run(kToneMapCall, source,
             {{}, named ? format : "rgb888", nullptr, out}, options);
}

// (width, height), or nothing.
std::optional<Size> size_of(const py::object &given) {
  if (given.is_none()) return std::nullopt;
  const auto [width, height] =
      argument<std::pair<int32_t, int32_t>>(given, "size");
  return Size{width, height};
}

py::object scale(const py::object &source, const py::object &size,
                 const char *format, const char *standard,
                 const py::object &out, const py::kwargs &given) {
  vexo_picture_options options = {};
  take(&options, kScaleCall, given);
  return run(kScaleCall, source, {size_of(size), format, standard, out},
             options);
}

// As large as fits into a square, and no larger than it is.
Size fitting(const vexo_img &img, int32_t side, bool quarter) {
  const int64_t w = (quarter ? img.height : img.width)[0];
  const int64_t h = (quarter ? img.width : img.height)[0];
  const int64_t longer = std::max(w, h);
  const int64_t to = std::min<int64_t>(side, longer);
  return {static_cast<int32_t>(std::max<int64_t>(w * to / longer, to > 0)),
          static_cast<int32_t>(std::max<int64_t>(h * to / longer, to > 0))};
}

py::object thumbnail(const py::object &source, const py::object &size,
                     const char *format, const char *standard,
                     const py::object &out, const py::kwargs &given) {
  vexo_picture_options options = {};
  take(&options, kThumbCall, given);
  Wish wish = {{}, format, standard, out};
  if (PyIndex_Check(size.ptr()) != 0) {
    Argument picture;
    wish.size =
        fitting(picture.source(source).img, argument<int32_t>(size, "size"),
                is_quarter(options.rotation));
  } else {
    wish.size = size_of(size);
  }
  return run(kThumbCall, source, wish, options);
}

}  // namespace

void define_calls(py::module_ &module) {
  const auto none = py::none();
  module.def("convert", &convert,
             "convert(source, format=None, *, dither=False, chroma='as-it-is', "
             "standard=None, out=None)\n--\n\n"
             "The picture in another format and standard.",
             py::arg("source"), py::arg("format") = none, py::kw_only(),
             py::arg("standard") = none, py::arg("out") = none);
  module.def(
      "scale", &scale,
      "scale(source, size=None, format=None, *, rotation='0', mode='plain', "
      "filter='plain', dither=False, chroma='as-it-is', standard=None, "
      "out=None)\n--\n\n"
      "The picture in another size, (width, height), which is that after the "
      "turn.",
      py::arg("source"), py::arg("size") = none, py::arg("format") = none,
      py::kw_only(), py::arg("standard") = none, py::arg("out") = none);
  module.def(
      "turn", &turn,
      "turn(source, rotation, format=None, *, dither=False, "
      "chroma='as-it-is', standard=None, out=None)\n--\n\n"
      "The picture turned left, right or half, or mirrored: mirror, flip.",
      py::arg("source"), py::arg("rotation"), py::arg("format") = none,
      py::kw_only(), py::arg("standard") = none, py::arg("out") = none);
  module.def(
      "tonemap", &tonemap,
      "tonemap(source, format=None, *, kind='hdr10', source_nit=0, "
      "measure=False, full_range=True, dither=False, chroma='as-it-is', "
      "out=None)\n--\n\n"
      "An HDR picture of 10 bits as one of 8 bits in BT.709, rgb888 unless "
      "said.",
      py::arg("source"), py::arg("format") = none, py::kw_only(),
      py::arg("out") = none);
  module.def(
      "thumbnail", &thumbnail,
      "thumbnail(source, size=None, format=None, *, rotation='0', prescale=0, "
      "dither=False, chroma='as-it-is', standard=None, out=None)\n--\n\n"
      "The picture much smaller: (width, height), or a number for as large as "
      "fits into such a square.",
      py::arg("source"), py::arg("size") = none, py::arg("format") = none,
      py::kw_only(), py::arg("standard") = none, py::arg("out") = none);
}

}  // namespace orumlox_python
