// SPDX-License-Identifier: Apache-2.0
//
// Pictures: memory of their own, or that of arrays, bytes and frames.
#include "picture.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

namespace orumlox_python {

namespace {

constexpr Named kStandards[] = {
    {"bt601", VEXO_STD_DEFAULT}, {"bt601-full", VEXO_STD_BT601_FULL},
    {"bt709", VEXO_STD_BT709},   {"bt709-full", VEXO_STD_BT709_FULL},
    {"bt2020", VEXO_STD_BT2020}, {"bt2020-full", VEXO_STD_BT2020_FULL}};
constexpr size_t kOwnAlignment = 64;

bool has_words(int32_t format) {
  return format == VEXO_FMT_RGB565 || format == VEXO_FMT_BGR565 ||
         format >= VEXO_FMT_YUV420PLANAR16;
}

const char *standard_name(int32_t standard) {
  for (const Named &entry : kStandards) {
    if (entry.value == standard) return entry.name;
  }
  return nullptr;
}

std::string size_text(int32_t width, int32_t height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

size_t bytes_of(const py::buffer_info &buffer) {
  return static_cast<size_t>(buffer.size * buffer.itemsize);
}

// Whether the elements of dimensions from `first` on lie one behind the other.
bool is_dense(const py::buffer_info &buffer, py::ssize_t first) {
  py::ssize_t step = buffer.itemsize;
  for (py::ssize_t i = buffer.ndim - 1; i >= first; --i) {
    const auto at = static_cast<size_t>(i);
    if (buffer.shape[at] != 1 && buffer.strides[at] != step) return false;
    step *= buffer.shape[at];
  }
  return true;
}

// The memory of any object that lets it be seen.
py::buffer_info memory_of(const py::handle &object) {
  if (!PyObject_CheckBuffer(object.ptr())) {
    throw py::type_error("bytes or an array are wanted, not " +
                         std::string(Py_TYPE(object.ptr())->tp_name));
  }
  py::buffer_info buffer = py::reinterpret_borrow<py::buffer>(object).request();
  // Objects are not to be written over.
  if (buffer.format.find('O') != std::string::npos) {
    throw py::type_error("bytes or numbers are wanted, not objects");
  }
  return buffer;
}

void keep(Picture *picture, py::buffer_info &&buffer) {
  picture->read_only = picture->read_only || buffer.readonly;
  picture->buffers.push_back(std::move(buffer));
}

// Words are read whole.
void check_addresses(const Picture &picture) {
  if (!has_words(picture.img.format)) return;
  for (const uint8_t *const plane : picture.img.plane) {
    if (reinterpret_cast<uintptr_t>(plane) % 2 != 0) {
      throw py::value_error("16-bit samples must lie at even addresses");
    }
  }
}

// What an array says of one plane: its rows, and the bytes of one.
struct Rows {
  uint8_t *data;
  int64_t count, bytes, stride;
};

Rows rows_of(const py::buffer_info &buffer) {
  if (buffer.ndim != 2 && buffer.ndim != 3) {
    throw py::value_error("an array of 2 or 3 dimensions is wanted");
  }
  const char kind = buffer.format.empty() ? 'B' : buffer.format.back();
  const bool swapped = buffer.format.find_first_of(">!") != std::string::npos;
  if (kind != (buffer.itemsize == 1 ? 'B' : 'H') || buffer.itemsize > 2 ||
      (swapped && buffer.itemsize > 1)) {
    throw py::value_error(
        "an array of uint8 or uint16, low byte first, is wanted");
  }
  if (!is_dense(buffer, 1)) {
    throw py::value_error("samples of a row must lie side by side");
  }
  int64_t bytes = buffer.itemsize * buffer.shape[1];
  if (buffer.ndim == 3) bytes *= buffer.shape[2];
  const int64_t stride = buffer.shape[0] == 1 ? bytes : buffer.strides[0];
  if (bytes > INT32_MAX || buffer.shape[0] > INT32_MAX || stride > INT32_MAX ||
      stride < -INT32_MAX) {
    throw py::value_error("the array is too large");
  }
  return {static_cast<uint8_t *>(buffer.ptr), buffer.shape[0], bytes, stride};
}

Picture from_buffer(py::buffer_info &&buffer, int32_t format, int32_t width,
                    int32_t height, int32_t alignment) {
  if (!is_dense(buffer, 0)) {
    throw py::value_error("bytes one behind the other are wanted");
  }
  Picture picture;
  check(vexo_picture_layout(&picture.img, format, width, height, alignment,
                            buffer.ptr, bytes_of(buffer)),
        std::string(vexo_format_name(format)) + " " + size_text(width, height) +
            " in " + std::to_string(bytes_of(buffer)) + " bytes");
  keep(&picture, std::move(buffer));
  check_addresses(picture);
  return picture;
}

// 4:2:0 as OpenCV has it: one array, chroma below luma.
Picture from_column(py::buffer_info &&buffer, int32_t format) {
  const Rows rows = rows_of(buffer);
  const bool column = format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21 ||
                      format == VEXO_FMT_YUV420 || format == VEXO_FMT_YV12;
  if (!column || buffer.ndim != 2 || buffer.itemsize != 1 ||
      rows.count % 3 != 0 || rows.bytes % 2 != 0) {
    throw py::value_error("an array for each of the " +
                          std::to_string(vexo_format_planes(format)) +
                          " planes is wanted, or Picture.from_bytes");
  }
  return from_buffer(std::move(buffer), format,
                     static_cast<int32_t>(rows.bytes),
                     static_cast<int32_t>(rows.count / 3 * 2), 1);
}

// As NumPy sees it: rows, samples, and channels where there are several.
py::array plane_view(const py::object &self, int32_t p) {
  const auto &picture = self.cast<const Picture &>();
  const vexo_img &img = picture.img;
  const py::ssize_t item = has_words(img.format) ? 2 : 1;
  const py::ssize_t unit = vexo_format_sample_bytes(img.format, p);
  std::vector<py::ssize_t> shape, strides;
  if (is_tiled(img.format)) {
    shape = {py::ssize_t{img.stride[p]} * img.buf_height[p]};
    strides = {1};
  } else {
    const bool pairs =
        img.format == VEXO_FMT_UYVY || img.format == VEXO_FMT_YUYV;
    const py::ssize_t width = img.width[p];
    shape = {img.height[p], pairs ? width + width % 2 : width};
    strides = {img.stride[p], unit};
    if (unit != item) {
      shape.push_back(unit / item);
      strides.push_back(item);
    }
  }
  py::array view(
      item == 2 ? py::dtype::of<uint16_t>() : py::dtype::of<uint8_t>(), shape,
      strides, img.plane[p], self);
  if (picture.read_only) view.attr("setflags")(py::arg("write") = false);
  return view;
}

py::tuple planes_of(const py::object &self) {
  const auto count = static_cast<size_t>(
      vexo_format_planes(self.cast<const Picture &>().img.format));
  py::tuple planes(count);
  for (size_t p = 0; p < count; ++p) {
    planes[p] = plane_view(self, static_cast<int32_t>(p));
  }
  return planes;
}

py::object array_of(const py::object &self, const py::object &dtype,
                    const py::object &copy) {
  const vexo_img &img = self.cast<const Picture &>().img;
  if (vexo_format_planes(img.format) != 1) {
    throw py::type_error(std::string(vexo_format_name(img.format)) +
                         " has several planes: see Picture.planes");
  }
  const py::object view = plane_view(self, 0);
  const bool copies = !copy.is_none() && copy.cast<bool>();
  py::object array =
      dtype.is_none() && !copies
          ? view
          : view.attr("astype")(
                dtype.is_none() ? py::object(view.attr("dtype")) : dtype,
                py::arg("copy") = copies);
  if (!copy.is_none() && !copies && !array.is(view)) {
    throw py::value_error("numbers of another type are a copy");
  }
  return array;
}

py::bytes bytes_of_picture(const Picture &picture) {
  const vexo_img &img = picture.img;
  size_t size = 0;
  vexo_picture_bytes(img.format, img.width[0], img.height[0], 1, &size);
  auto result = py::reinterpret_steal<py::bytes>(
      PyBytes_FromStringAndSize(nullptr, static_cast<py::ssize_t>(size)));
  if (!result) throw py::error_already_set();
  char *const data = PyBytes_AS_STRING(result.ptr());
  memset(data, 0, size);
  vexo_img dense;
  vexo_picture_layout(&dense, img.format, img.width[0], img.height[0], 1, data,
                      size);
  dense.color_std = img.color_std;
  int32_t status;
  {
    const WithoutGil without;
    status = vexo_picture_convert(nullptr, &img, &dense, nullptr);
  }
  check(status, "tobytes");
  return result;
}

std::optional<int32_t> number(const py::object &object, const char *name) {
  const py::object value = py::getattr(object, name, py::none());
  if (value.is_none()) return std::nullopt;
  return value.cast<int32_t>();
}

}  // namespace

void *Picture::operator new(size_t size) {
  void *const memory = calloc(size, 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void Picture::operator delete(void *memory) { free(memory); }

Picture::Picture(int32_t format, int32_t width, int32_t height) {
  const std::string text = "a picture of " + size_text(width, height);
  size_t size = 0;
  check(vexo_picture_bytes(format, width, height, 1, &size), text);
  // Rows have no gaps, as arrays do.
  own = size > PTRDIFF_MAX - kOwnAlignment ? nullptr
                                           : calloc(size + kOwnAlignment, 1);
  if (own == nullptr) check(VEXO_ERR_MEMORY, text);
  const auto address = reinterpret_cast<uintptr_t>(own);
  vexo_picture_layout(
      &img, format, width, height, 1,
      static_cast<uint8_t *>(own) + (kOwnAlignment - address % kOwnAlignment),
      size);
}

Picture::Picture(Picture &&other) noexcept
    : img(other.img),
      read_only(other.read_only),
      own(std::exchange(other.own, nullptr)),
      buffers(std::move(other.buffers)) {}

Picture::~Picture() { free(own); }

std::string Picture::describe() const {
  std::string text = vexo_format_name(img.format);
  text += " " + size_text(img.width[0], img.height[0]);
  if (has_standard(img.format)) {
    text += std::string(" ") + standard_name(img.color_std);
  }
  return text;
}

int32_t format_named(const char *name) {
  if (name == nullptr) throw py::type_error("a format is wanted, not None");
  const int32_t format = vexo_format_of_name(name);
  if (format < 0) {
    throw py::value_error("unknown format '" + std::string(name) +
                          "': see orumlox.formats");
  }
  return format;
}

int32_t standard_named(const char *name) {
  for (const Named &entry : kStandards) {
    if (strcmp(entry.name, name) == 0) return entry.value;
  }
  throw py::value_error("unknown standard '" + std::string(name) +
                        "': bt601, bt709, bt2020, each or with -full");
}

bool has_standard(int32_t format) {
  return format != VEXO_FMT_YUV400 &&
         (format < VEXO_FMT_RGB565 ||
          (format >= VEXO_FMT_YUV420PLANAR16 && format < VEXO_FMT_RGBA1010102));
}

void set_standard(Picture *picture, const char *name) {
  if (name == nullptr) return;
  const int32_t standard = standard_named(name);
  if (has_standard(picture->img.format)) picture->img.color_std = standard;
}

Picture wrap(const py::object &arrays, int32_t format) {
  const int32_t count = vexo_format_planes(format);
  if (is_tiled(format)) {
    throw py::value_error("tiles are wrapped by Picture.from_bytes");
  }
  const bool listed =
      py::isinstance<py::list>(arrays) || py::isinstance<py::tuple>(arrays);
  if (!listed && count > 1) return from_column(memory_of(arrays), format);
  const py::list list(listed ? arrays : py::make_tuple(arrays));
  if (list.size() != static_cast<size_t>(count)) {
    throw py::value_error(std::string(vexo_format_name(format)) + " has " +
                          std::to_string(count) + " planes");
  }
  Picture picture;
  Rows rows[3] = {};
  for (int32_t p = 0; p < count; ++p) {
    py::buffer_info buffer = memory_of(list[static_cast<size_t>(p)]);
    rows[p] = rows_of(buffer);
    const int64_t unit = vexo_format_sample_bytes(format, p);
    const int64_t sample =
        buffer.itemsize * (buffer.ndim == 3 ? buffer.shape[2] : 1);
    // A row of pairs may be a row of samples.
    if (sample != unit && (p == 0 || buffer.ndim == 3)) {
      throw py::value_error(std::string(vexo_format_name(format)) +
                            " has samples of " + std::to_string(unit) +
                            " bytes, the array of " + std::to_string(sample));
    }
    keep(&picture, std::move(buffer));
  }
  const auto width =
      static_cast<int32_t>(rows[0].bytes / vexo_format_sample_bytes(format, 0));
  const auto height = static_cast<int32_t>(rows[0].count);
  uint8_t *planes[3];
  int32_t strides[3];
  vexo_img expected;
  check(vexo_picture_geometry(&expected, format, width, height, 1),
        "an array of " + size_text(width, height));
  for (int32_t p = 0; p < count; ++p) {
    if (rows[p].count != expected.height[p] ||
        rows[p].bytes != expected.stride[p]) {
      throw py::value_error("plane " + std::to_string(p) + " of " +
                            vexo_format_name(format) + " " +
                            size_text(width, height) + " has " +
                            std::to_string(expected.height[p]) + " rows of " +
                            std::to_string(expected.stride[p]) + " bytes");
    }
    planes[p] = rows[p].data;
    strides[p] = static_cast<int32_t>(rows[p].stride);
  }
  check(vexo_picture_wrap(&picture.img, format, width, height, planes, strides),
        "rows of the array");
  check_addresses(picture);
  return picture;
}

Picture from_av(const py::object &frame) {
  auto name = frame.attr("format").attr("name").cast<std::string>();
  // What ffmpeg calls so is of full range.
  bool full = name.rfind("yuvj", 0) == 0;
  if (full) name.erase(3, 1);
  const int32_t format = format_named(name.c_str());
  const auto width = frame.attr("width").cast<int32_t>();
  const auto height = frame.attr("height").cast<int32_t>();
  Picture picture;
  vexo_img expected;
  check(vexo_picture_geometry(&expected, format, width, height, 1), name);
  uint8_t *planes[3];
  int32_t strides[3];
  const py::sequence from = frame.attr("planes");
  for (int32_t p = 0; p < vexo_format_planes(format); ++p) {
    const py::object plane = from[static_cast<size_t>(p)];
    py::buffer_info buffer = memory_of(plane);
    strides[p] = plane.attr("line_size").cast<int32_t>();
    planes[p] = static_cast<uint8_t *>(buffer.ptr);
    if (strides[p] < expected.stride[p] ||
        bytes_of(buffer) < static_cast<size_t>(expected.height[p] - 1) *
                                   static_cast<size_t>(strides[p]) +
                               static_cast<size_t>(expected.stride[p])) {
      throw py::value_error("the planes of the frame are too small");
    }
    keep(&picture, std::move(buffer));
  }
  check(vexo_picture_wrap(&picture.img, format, width, height, planes, strides),
        "the frame");
  // The codes of ITU-T H.273; PyAV before 11 does not tell them.
  full = full || number(frame, "color_range") == 2;
  const int32_t matrix = number(frame, "colorspace").value_or(0);
  const bool bt2020 = matrix == 9 || matrix == 10;
  const size_t colours = matrix == 1 ? 1 : bt2020 ? 2 : 0;
  set_standard(&picture, kStandards[2 * colours + full].name);
  return picture;
}

void define_picture(py::module_ &module) {
  py::list formats;
  for (int32_t f = vexo_format_next(-1); f >= 0; f = vexo_format_next(f)) {
    formats.append(vexo_format_name(f));
  }
  module.attr("formats") = py::tuple(formats);

  py::class_<Picture>(module, "Picture",
                      "A picture: its format, size, colour standard and "
                      "planes. Picture(format, width, height) has memory of "
                      "its own, zeroed; wrap, from_bytes and from_av share "
                      "that of others.")
      .def(py::init([](const char *format, int32_t width, int32_t height,
                       const char *standard) {
             Picture picture(format_named(format), width, height);
             set_standard(&picture, standard);
             return picture;
           }),
           py::arg("format"), py::arg("width"), py::arg("height"),
           py::kw_only(), py::arg("standard") = py::none())
      .def_static(
          "wrap",
          [](const py::object &arrays, const char *format,
             const char *standard) {
            Picture picture = wrap(arrays, format_named(format));
            set_standard(&picture, standard);
            return picture;
          },
          "wrap(arrays, format, *, standard=None)\n--\n\nThe picture that an "
          "array holds, or a list of one for each plane. Rows may be any "
          "distance apart, upwards too.",
          py::arg("arrays"), py::arg("format"), py::kw_only(),
          py::arg("standard") = py::none())
      .def_static(
          "from_bytes",
          [](const py::object &data, const char *format, int32_t width,
             int32_t height, int32_t alignment, const char *standard) {
            Picture picture = from_buffer(memory_of(data), format_named(format),
                                          width, height, alignment);
            set_standard(&picture, standard);
            return picture;
          },
          "from_bytes(data, format, width, height, *, alignment=1, "
          "standard=None)\n--\n\nThe picture that lies in these bytes, planes "
          "one behind the other and rows aligned to so many bytes.",
          py::arg("data"), py::arg("format"), py::arg("width"),
          py::arg("height"), py::kw_only(), py::arg("alignment") = 1,
          py::arg("standard") = py::none())
      .def_static(
          "from_av",
          [](const py::object &frame, const char *standard) {
            Picture picture = from_av(frame);
            set_standard(&picture, standard);
            return picture;
          },
          "from_av(frame, *, standard=None)\n--\n\nThe picture of an "
          "av.VideoFrame.",
          py::arg("frame"), py::kw_only(), py::arg("standard") = py::none())
      .def_property_readonly(
          "format",
          [](const Picture &p) { return vexo_format_name(p.img.format); })
      .def_property_readonly("width",
                             [](const Picture &p) { return p.img.width[0]; })
      .def_property_readonly("height",
                             [](const Picture &p) { return p.img.height[0]; })
      .def_property_readonly("size",
                             [](const Picture &p) {
                               return py::make_tuple(p.img.width[0],
                                                     p.img.height[0]);
                             })
      .def_property(
          "standard",
          [](const Picture &p) {
            return has_standard(p.img.format) ? standard_name(p.img.color_std)
                                              : nullptr;
          },
          [](Picture &p, const char *name) { set_standard(&p, name); })
      .def_property_readonly("planes", &planes_of)
      .def("tobytes", &bytes_of_picture, "Planes and rows without gaps.")
      .def("__array__", &array_of, py::arg("dtype") = py::none(),
           py::arg("copy") = py::none())
      .def("__repr__", [](const Picture &p) {
        return "<orumlox.Picture " + p.describe() + ">";
      });
}

}  // namespace orumlox_python
