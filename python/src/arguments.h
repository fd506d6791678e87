// SPDX-License-Identifier: Apache-2.0
//
// Sources and destinations of calls.
#pragma once

#include <optional>

#include "picture.h"

namespace orumlox_python {

// A picture, or what one is made of for this call.
class Argument {
 public:
  const Picture &source(const py::handle &given) {
    if (py::isinstance<Picture>(given)) return given.cast<const Picture &>();
    if (!py::hasattr(given, "planes") || !py::hasattr(given, "format")) {
      throw py::type_error(
          "a Picture or an av.VideoFrame is wanted, not " +
          std::string(Py_TYPE(given.ptr())->tp_name) +
          ": Picture.wrap(array, format) makes one of an array");
    }
    return own_.emplace(from_av(py::reinterpret_borrow<py::object>(given)));
  }
  Picture &destination(const py::handle &given, int32_t format) {
    if (py::isinstance<Picture>(given)) return given.cast<Picture &>();
    return own_.emplace(
        wrap(py::reinterpret_borrow<py::object>(given), format));
  }

 private:
  std::optional<Picture> own_;
};

// Refuses to write to what is read-only or overlaps the source.
void check_pair(const char *name, const vexo_img &src, const Picture &dst);

}  // namespace orumlox_python
