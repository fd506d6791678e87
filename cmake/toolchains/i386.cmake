# SPDX-License-Identifier: Apache-2.0
set(CMAKE_SYSTEM_PROCESSOR i686)
set(triple i686-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
# Runs natively; only the loader and the libraries are the cross package's.
set(CMAKE_CROSSCOMPILING_EMULATOR
  /usr/${triple}/lib/ld-linux.so.2 --library-path /usr/${triple}/lib)
