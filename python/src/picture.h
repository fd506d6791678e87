// SPDX-License-Identifier: Apache-2.0
//
// The class Picture: a vexo_img with what keeps its memory.
#pragma once

#include <orumlox/picture.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <string>
#include <vector>

namespace orumlox_python {

namespace py = pybind11;

// A name of an option and what it stands for.
struct Named {
  const char *name;
  int32_t value;
};

class WithoutGil {
 public:
  WithoutGil() : state_(PyEval_SaveThread()) {}
  ~WithoutGil() { PyEval_RestoreThread(state_); }
  WithoutGil(const WithoutGil &) = delete;
  WithoutGil &operator=(const WithoutGil &) = delete;

 private:
  PyThreadState *state_;
};

struct Picture {
  vexo_img img = {};
  bool read_only = false;
  // Of a picture with memory of its own.
  void *own = nullptr;
  // Memory of others is not freed, moved or resized while this holds it.
  std::vector<py::buffer_info> buffers;

  // Zeroed: Python makes objects without calling __init__ if it is told to.
  static void *operator new(size_t size);
  static void operator delete(void *memory);

  Picture() = default;
  Picture(int32_t format, int32_t width, int32_t height);
  Picture(Picture &&other) noexcept;
  ~Picture();

  std::string describe() const;
};

// Codes, or ValueError with a list of what there is.
int32_t format_named(const char *name);
int32_t standard_named(const char *name);
bool has_standard(int32_t format);
constexpr bool is_tiled(int32_t format) {
  return format >= VEXO_FMT_T64X32 && format <= VEXO_FMT_T256X16;
}
// Sets it where the format has one; null changes nothing.
void set_standard(Picture *picture, const char *name);

// ValueError, Unsupported or MemoryError with this text, unless it is VEXO_OK.
void check(int32_t status, const std::string &text);

// An argument of another type than this is a TypeError with its name.
template <class T>
T argument(const py::handle &given, const char *name) {
  try {
    return given.cast<T>();
  } catch (const py::cast_error &) {
    throw py::type_error(std::string(name) + " is not to be " +
                         py::repr(given).cast<std::string>());
  }
}

// Without a copy: an array or one for each plane; the frame of PyAV.
Picture wrap(const py::object &arrays, int32_t format);
Picture from_av(const py::object &frame);

void define_picture(py::module_ &module);
void define_calls(py::module_ &module);
void define_enhancement(py::module_ &module);
void define_media(py::module_ &module);

}  // namespace orumlox_python
