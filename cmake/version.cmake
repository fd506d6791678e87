# SPDX-License-Identifier: Apache-2.0
# ORUMLOX_VERSION, of the numbers in the public header.
set(header ${CMAKE_CURRENT_SOURCE_DIR}/include/orumlox/version.h)
file(STRINGS ${header} ORUMLOX_VERSION REGEX "^#define ORUMLOX_VERSION_[A-Z]+ [0-9]+$")
list(TRANSFORM ORUMLOX_VERSION REPLACE ".* " "")
list(JOIN ORUMLOX_VERSION "." ORUMLOX_VERSION)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
