// SPDX-License-Identifier: Apache-2.0
//
// The module: exceptions, and what concerns compressed streams.
#include <orumlox/orumlox.h>

#include <cctype>
#include <cstring>

#include "picture.h"

namespace orumlox_python {

namespace {

PyObject *unsupported = nullptr;

constexpr Named kTypes[] = {
#define NAMED(name) \
  { #name, MLOX_MT_##name }
    NAMED(VIDEO_MPEG4),         NAMED(VIDEO_H263),
    NAMED(VIDEO_H264),          NAMED(VIDEO_WMV7),
    NAMED(VIDEO_WMV8),          NAMED(VIDEO_WMV9),
    NAMED(VIDEO_MSMPEG4V3),     NAMED(VIDEO_SORENSON_H263),
    NAMED(VIDEO_RV10),          NAMED(VIDEO_RV20),
    NAMED(VIDEO_RV30),          NAMED(VIDEO_RV40),
    NAMED(VIDEO_MP43),          NAMED(VIDEO_VC1),
    NAMED(VIDEO_VP8),           NAMED(VIDEO_HEVC),
    NAMED(VIDEO_VP9),           NAMED(VIDEO_AV1),
    NAMED(AUDIO_PCM),           NAMED(AUDIO_ALAW),
    NAMED(AUDIO_MULAW),         NAMED(AUDIO_MPEG),
    NAMED(AUDIO_MP3),           NAMED(AUDIO_AAC),
    NAMED(AUDIO_AC3),           NAMED(AUDIO_DTS),
    NAMED(AUDIO_AMR_NB),        NAMED(AUDIO_AMR_WB),
    NAMED(AUDIO_QCELP),         NAMED(AUDIO_WMA),
    NAMED(AUDIO_WMA_PRO),       NAMED(AUDIO_WMA_LOSSLESS),
    NAMED(AUDIO_EVRC),          NAMED(AUDIO_FLAC),
    NAMED(AUDIO_VORBIS),        NAMED(AUDIO_IMA_ADPCM),
    NAMED(AUDIO_ADPCM),         NAMED(AUDIO_SIPR),
    NAMED(AUDIO_COOK),          NAMED(AUDIO_OPUS),
    NAMED(AUDIO_DSD),           NAMED(AUDIO_EAC3),
    NAMED(AUDIO_AC4),           NAMED(SUBTITLE_SRT),
    NAMED(SUBTITLE_TIMED_TEXT), NAMED(SUBTITLE_ASS),
    NAMED(SUBTITLE_SSA),
#undef NAMED
};

// "video/h264" of "VIDEO_H264".
std::string type_name(const Named &type) {
  std::string name = type.name;
  name[name.find('_')] = '/';
  for (char &c : name) c = static_cast<char>(tolower(c));
  return name;
}

py::object fourcc(const py::object &code) {
  uint32_t value = 0;
  if (py::isinstance<py::int_>(code)) {
    value = argument<uint32_t>(code, "code");
  } else {
    const auto text = argument<std::string>(code, "code");
    if (text.empty() || text.size() > 4) {
      throw py::value_error("one to four characters are wanted, not '" + text +
                            "'");
    }
    for (size_t i = 0; i < 4; ++i) {
      const char c = i < text.size() ? text[i] : ' ';
      value |= uint32_t{static_cast<uint8_t>(c)} << (8 * i);
    }
  }
  const int32_t found = mlox_fcc2mt(static_cast<int32_t>(value));
  for (const Named &type : kTypes) {
    if (type.value == found) return py::str(type_name(type));
  }
  return py::none();
}

py::list keyframes(const py::iterable &units, const std::string &codec) {
  const Named *known = nullptr;
  for (const Named &type : kTypes) {
    const bool video = strncmp(type.name, "VIDEO_", 6) == 0;
    if (video && type_name(type).substr(6) == codec) known = &type;
  }
  if (known == nullptr) {
    throw py::value_error("unknown codec '" + codec + "'");
  }
  py::list answers;
  for (const py::handle &unit : units) {
    if (!PyObject_CheckBuffer(unit.ptr())) {
      throw py::type_error("units are bytes-like");
    }
    const py::buffer_info bytes =
        py::reinterpret_borrow<py::buffer>(unit).request();
    const bool dense = bytes.ndim == 1 &&
                       (bytes.size < 2 || bytes.strides[0] == bytes.itemsize);
    if (!dense || bytes.size * bytes.itemsize > INT32_MAX) {
      throw py::value_error("units are bytes without gaps, below 2 GiB");
    }
    int32_t key;
    {
      const WithoutGil without;
      key = mlox_is_vkeyfrm(static_cast<uint32_t>(known->value),
                            static_cast<const uint8_t *>(bytes.ptr),
                            static_cast<int32_t>(bytes.size * bytes.itemsize));
    }
    answers.append(key == 1);
  }
  return answers;
}

}  // namespace

void check(int32_t status, const std::string &text) {
  if (status == VEXO_OK) return;
  PyObject *const type = status == VEXO_ERR_UNSUPPORTED ? unsupported
                         : status == VEXO_ERR_MEMORY    ? PyExc_MemoryError
                                                        : PyExc_ValueError;
  PyErr_SetString(type, (text + ": " + vexo_status_name(status)).c_str());
  throw py::error_already_set();
}

void define_media(py::module_ &module) {
  module.def("fourcc", &fourcc,
             "fourcc(code)\n--\n\nThe media type that a FourCC or a WAVE "
             "format tag stands for, 'video/h264', or None.",
             py::arg("code"));
  module.def("keyframes", &keyframes,
             "keyframes(units, codec)\n--\n\nWhich of these access units of "
             "video, bytes or packets of PyAV, are key frames.",
             py::arg("units"), py::arg("codec"));
}

}  // namespace orumlox_python

PYBIND11_MODULE(_orumlox, module) {
  using namespace orumlox_python;
  py::options options;
  options.disable_function_signatures();  // documentation strings have them
  unsupported = PyErr_NewExceptionWithDoc("orumlox.Unsupported",
                                          "What the library has no way to do.",
                                          PyExc_ValueError, nullptr);
  if (unsupported == nullptr) throw py::error_already_set();
  module.attr("Unsupported") = py::handle(unsupported);
  const int32_t version = vexo_version();
  module.attr("__version__") = std::to_string(version / 10000) + "." +
                               std::to_string(version / 100 % 100) + "." +
                               std::to_string(version % 100);
  define_picture(module);
  define_calls(module);
  define_enhancement(module);
  define_media(module);
}
